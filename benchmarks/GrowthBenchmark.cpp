// What one element costs when there are few and when there are many. A time that grows with the
// number is work that grows with its square. The names are "Growth/SUBJECT/NUMBER", and the items
// that a benchmark counts are the elements.
#include <hexmire/control/Hexmire.h>
#include <hexmire/hosting/EventLoop.h>
#include <hexmire/sml.h>

#include "Benchmarks.h"
#include "Workloads.h"
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace hexmire::bench {

namespace {

/// A list whose children have the names "N1" to "N<count>" and the format U4.
SECSItemPtr NamedList(const SECSMessagePtr& message, std::int64_t count) {
    SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    for (std::int64_t i = 1; i <= count; ++i) {
        const SECSItemPtr item = list->AddNew(list->ItemCount() + 1);
        item->Name("N" + std::to_string(i));
        item->Format(FormatU4);
        item->Value(static_cast<std::uint32_t>(i));
    }
    return list;
}

void SetElements(benchmark::State& state, std::int64_t ofOneIteration) {
    state.SetItemsProcessed(ofOneIteration * state.iterations());
}

// --- lists ------------------------------------------------------------------------------------

void AppendItems(benchmark::State& state) {
    for (auto _ : state) {
        const SECSMessagePtr message = New<SECSMessage>();
        const SECSItemPtr list = message->Root()->AddNew(1);
        list->Format(FormatList);
        for (std::int64_t i = 0; i < state.range(0); ++i)
            list->AddNew(list->ItemCount() + 1)->Format(FormatU4);
        benchmark::DoNotOptimize(list->ItemCount());
    }
    SetElements(state, state.range(0));
}

void FindItemsByPosition(benchmark::State& state) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr list = NamedList(message, state.range(0));
    for (auto _ : state) {
        for (std::int32_t i = 1; i <= state.range(0); ++i)
            benchmark::DoNotOptimize(list->Item(i));
    }
    SetElements(state, state.range(0));
}

/// One lookup of each of some names that stand all over the list.
void FindItemByName(benchmark::State& state) {
    constexpr std::int64_t kLookUps = 16;
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr list = NamedList(message, state.range(0));
    for (auto _ : state) {
        for (std::int64_t i = 1; i <= kLookUps; ++i)
            benchmark::DoNotOptimize(
                list->Item("N" + std::to_string(i * state.range(0) / kLookUps)));
    }
    SetElements(state, kLookUps);
}

void DeleteFirstItems(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const SECSMessagePtr message = New<SECSMessage>();
        const SECSItemPtr list = NamedList(message, state.range(0));
        state.ResumeTiming();
        while (list->ItemCount() != 0)
            list->Item(1)->Delete();
    }
    SetElements(state, state.range(0));
}

void InsertFirstItems(benchmark::State& state) {
    for (auto _ : state) {
        const SECSMessagePtr message = New<SECSMessage>();
        const SECSItemPtr list = message->Root()->AddNew(1);
        list->Format(FormatList);
        for (std::int64_t i = 0; i < state.range(0); ++i)
            list->AddNew(1);
        benchmark::DoNotOptimize(list->ItemCount());
    }
    SetElements(state, state.range(0));
}

// --- messages ---------------------------------------------------------------------------------

ByteVector EncodedList(std::int64_t count) {
    const SECSMessagePtr message = New<SECSMessage>();
    NamedList(message, count);
    return EncodeBody(*message);
}

void DecodeList(benchmark::State& state) {
    const ByteVector bytes = EncodedList(state.range(0));
    for (auto _ : state)
        ReadTree(DecodeBody(bytes).Message->Root());
    SetElements(state, state.range(0));
}

void EncodeList(benchmark::State& state) {
    const SECSMessagePtr message = New<SECSMessage>();
    NamedList(message, state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(EncodeBody(*message).data());
    SetElements(state, state.range(0));
}

void RenderList(benchmark::State& state) {
    const SECSMessagePtr message = DecodeBody(EncodedList(state.range(0))).Message;
    for (auto _ : state)
        benchmark::DoNotOptimize(RenderSml(*message, true).data());
    SetElements(state, state.range(0));
}

void ParseList(benchmark::State& state) {
    const std::string text = RenderSml(*DecodeBody(EncodedList(state.range(0))).Message, true);
    for (auto _ : state)
        benchmark::DoNotOptimize(ParseSml(text).Message.get());
    SetElements(state, state.range(0));
}

/// Lists one inside the other: as deep as there are elements.
void DecodeNested(benchmark::State& state) {
    ByteVector bytes;
    for (std::int64_t i = 1; i < state.range(0); ++i)
        bytes.insert(bytes.end(), {0x01, 0x01});
    bytes.insert(bytes.end(), {0x01, 0x00});
    for (auto _ : state)
        benchmark::DoNotOptimize(DecodeBody(bytes).Message.get());
    SetElements(state, state.range(0));
}

ByteVector TextBody(std::int64_t size) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(FormatAscii);
    item->Value(std::string(static_cast<std::size_t>(size), 'x'));
    return EncodeBody(*message);
}

void DecodeText(benchmark::State& state) {
    const ByteVector bytes = TextBody(state.range(0));
    for (auto _ : state)
        ReadTree(DecodeBody(bytes).Message->Root());
    SetElements(state, state.range(0));
}

void EncodeText(benchmark::State& state) {
    const SECSMessagePtr message = DecodeBody(TextBody(state.range(0))).Message;
    for (auto _ : state)
        benchmark::DoNotOptimize(EncodeBody(*message).data());
    SetElements(state, state.range(0));
}

// --- dictionaries -----------------------------------------------------------------------------

void AddTemplates(Hexmire& control, std::int64_t count) {
    for (std::int64_t i = 1; i <= count; ++i) {
        const SECSTransPtr trans =
            control.SECSDictionary()->AddNewTrans(control.SECSDictionary()->TransCount() + 1);
        trans->Name("T" + std::to_string(i));
    }
}

void AppendTemplates(benchmark::State& state) {
    EventLoop loop;
    for (auto _ : state) {
        Hexmire control(loop.Platform({.MessageLog = false}));
        AddTemplates(control, state.range(0));
    }
    SetElements(state, state.range(0));
}

/// New transactions by some names that stand all over the dictionary.
void NewTransactionByName(benchmark::State& state) {
    constexpr std::int64_t kTransactions = 16;
    EventLoop loop;
    Hexmire control(loop.Platform({.MessageLog = false}));
    AddTemplates(control, state.range(0));
    for (auto _ : state) {
        for (std::int64_t i = 1; i <= kTransactions; ++i)
            benchmark::DoNotOptimize(control.NewSECSTransaction(
                "T" + std::to_string(i * state.range(0) / kTransactions)));
    }
    SetElements(state, kTransactions);
}

void LoadTemplates(benchmark::State& state) {
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("hexmire-growth-" + std::to_string(::getpid()) + ".xml"))
                                 .string();
    std::ofstream file(path);
    file << "<SECSDictionary>\n";
    for (std::int64_t i = 1; i <= state.range(0); ++i) {
        file << R"(<Trans Name="T)" << i << R"(" Desc="">)";
        for (const int function : {1, 2}) {
            const char* const role = function == 1 ? "Primary" : "Secondary";
            file << "<" << role << R"( Stream="1" Func=")" << function
                 << R"(" Name="" Desc=""><Root><Item Name="V" Desc="" Format="U4" )"
                    R"(IsArray="NO" Value=""/></Root></)"
                 << role << ">";
        }
        file << "</Trans>\n";
    }
    file << "</SECSDictionary>\n";
    file.close();
    EventLoop loop;
    for (auto _ : state) {
        Hexmire control(loop.Platform({.MessageLog = false}));
        control.SECSDictionaryFile(path);
        control.LoadXMLDictionary();
        if (control.SECSDictionary()->TransCount() != state.range(0))
            state.SkipWithError("not every template was loaded");
    }
    SetElements(state, state.range(0));
    std::filesystem::remove(path);
}

}  // namespace

void RegisterGrowth() {
    using Sizes = std::vector<std::int64_t>;
    const Sizes few{16, 128, 1'024, 8'192, 65'536};
    const auto add = [](const char* subject, auto function, const Sizes& sizes) {
        auto* const made =
            benchmark::RegisterBenchmark((std::string("Growth/") + subject).c_str(), function);
        for (const std::int64_t size : sizes)
            made->Arg(size);
    };
    add("list: append an item", AppendItems, few);
    add("list: insert an item first", InsertFirstItems, few);
    add("list: delete the first item", DeleteFirstItems, few);
    add("list: find an item by position", FindItemsByPosition, few);
    add("list: find an item by name", FindItemByName, few);
    add("message: decode an item", DecodeList, few);
    add("message: encode an item", EncodeList, few);
    add("message: decode a list in a list", DecodeNested, few);
    add("message: render an item", RenderList, few);
    add("message: parse an item", ParseList, few);
    add("dictionary: append a template", AppendTemplates, few);
    add("dictionary: load a template", LoadTemplates, {16, 128, 1'024, 8'192});
    add("dictionary: new transaction by name", NewTransactionByName, few);
    const Sizes many{1 << 10, 1 << 13, 1 << 16, 1 << 19, 1 << 22};
    add("text: decode a byte", DecodeText, many);
    add("text: encode a byte", EncodeText, many);
}

}  // namespace hexmire::bench
