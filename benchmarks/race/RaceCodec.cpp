#include <hexmire/sml.h>

#include "../Workloads.h"
#include "../floor/Figures.h"
#include "Races.h"
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace hexmire::bench {

namespace {

double HeapInUse() {
    const auto info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// Bytes of memory for each item of a decoded list.
double BytesOfItem(const ByteVector& list) {
    const double before = HeapInUse();
    const SECSMessagePtr message = DecodeBody(list).Message;
    const double after = HeapInUse();
    const SECSItemPtr root = message->Item(1);
    return (after - before) / root->ItemCount();
}

}  // namespace

void RaceCodec(const std::string& dataDirectory) {
    Figures figures;
    // First of all, while no ended tree has left blocks of memory for the next one.
    const double bytesOfItem = BytesOfItem(ReadBody(dataDirectory, "w1b"));
    for (const Workload& workload : CodecWorkloads()) {
        const std::string name = "w1" + workload.Name;
        const ByteVector bytes = ReadBody(dataDirectory, name);
        const SECSMessagePtr ready = New<SECSMessage>();
        workload.Build(ready->Root());
        const std::string difference = Difference(bytes, EncodeBody(*ready));
        if (!difference.empty())
            throw std::runtime_error(std::string(name).append(": ").append(difference));

        const auto measure = [&](const char* what, auto function) {
            figures.Add(name + "_" + what, NanosecondsOf(function));
        };
        const Variant body = Variant::Bytes(bytes);  // as a received message holds its body
        measure("decode_ns", [&] { ReadTree(DecodeSharedBody(body).Message->Root()); });
        measure("encode_ns", [&] {
            const SECSMessagePtr message = New<SECSMessage>();
            workload.Build(message->Root());
            Keep(EncodedBody(*message).View<std::uint8_t>().data());
        });
        measure("encode_ready_ns", [&] { Keep(EncodedBody(*ready).View<std::uint8_t>().data()); });
        if (workload.Name == "a") {
            const SECSMessagePtr message = DecodeBody(bytes).Message;
            measure("sml_ns", [&] { Keep(RenderSml(*message, true).data()); });
        }
        if (workload.Name == "b") figures.Add(name + "_item_bytes", bytesOfItem);
    }
    figures.Print();
}

}  // namespace hexmire::bench
