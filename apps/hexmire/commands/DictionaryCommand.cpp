#include "commands/DictionaryCommand.h"

#include <hexmire/hosting/Utf8.h>
#include <hexmire/support/Text.h>

#include "CommandLine.h"
#include "DictionaryCheck.h"
#include "DictionaryFile.h"
#include "DictionaryWriter.h"
#include "ExactSml.h"
#include "Failure.h"
#include "LoadedDictionary.h"
#include "MessageRecord.h"
#include "SmlInput.h"
#include "Template.h"
#include "VisibleText.h"
#include <fnmatch.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <iostream>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;

std::string Counted(std::size_t count, const std::string& word) {
    return (count == 0 ? "no" : std::to_string(count)) + ' ' + word + (count == 1 ? "" : "s");
}

// --- check ---------------------------------------------------------------------------------------

void PrintFinding(const std::string& file, const DictionaryFinding& finding, bool json) {
    if (json) {
        const Json line{{"file", file}, {"line", finding.Line}, {"text", finding.Text}};
        std::cout << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    } else {
        std::cout << OutputText(file + ':' + std::to_string(finding.Line) + ": " + finding.Text)
                  << '\n';
    }
}

void Check(const DictionaryOptions& options) {
    std::size_t findings = 0;
    std::size_t transactions = 0;
    for (const std::string& file : options.Files) {
        const CheckedDictionary checked = CheckDictionary(file);
        findings += checked.Findings.size();
        transactions += checked.Transactions;
        for (const DictionaryFinding& finding : checked.Findings)
            PrintFinding(file, finding, options.Json);
    }
    if (options.Json) {
        const Json summary{{"files", options.Files.size()},
                           {"transactions", transactions},
                           {"findings", findings}};
        std::cout << summary.dump() << '\n';
    } else if (findings == 0) {
        std::cout << Counted(options.Files.size(), "file") << ", "
                  << Counted(transactions, "transaction") << ", nothing found\n";
    }
    std::cout << std::flush;
    if (findings != 0) throw Told();
}

// --- list ----------------------------------------------------------------------------------------

bool HasWildcard(const std::string& pattern) {
    return pattern.find_first_of("*?[") != std::string::npos;
}

/// A pattern with wildcards is that of a whole name, any other one a part of it or of the
/// description; letter case does not matter.
bool Matches(const std::string& pattern, const SECSTrans& trans) {
    const std::string wanted = UpperCase(pattern);
    const std::string name = UpperCase(trans.Name());
    if (HasWildcard(pattern)) return ::fnmatch(wanted.c_str(), name.c_str(), 0) == 0;
    return name.find(wanted) != std::string::npos ||
           UpperCase(trans.Description()).find(wanted) != std::string::npos;
}

constexpr std::size_t kColumns = 4;
using Row = std::array<std::string, kColumns>;

Row RowOf(const SECSTrans& trans) {
    const SECSMessage& primary = *trans.Primary();
    const SECSMessage& secondary = *trans.Secondary();
    const bool hasReply = HasReply(trans);
    return {trans.Name(),
            StreamFunction(primary.Stream(), primary.Func()) + (hasReply ? " W" : ""),
            hasReply ? StreamFunction(secondary.Stream(), secondary.Func()) : "-",
            trans.Description()};
}

void PrintTable(const std::vector<Row>& rows) {
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column)
            widths.at(column) = std::max(widths.at(column), row.at(column).size());
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < kColumns; ++column) {
            std::string cell = row.at(column);
            cell.resize(widths.at(column) + 2, ' ');
            line += cell;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::cout << OutputText(Utf8FromLatin1(line)) << '\n';
    }
}

/// What loading reported goes to the standard error, if the rest of the file is there.
void TellErrors(const LoadedDictionary& dictionary, const std::string& path) {
    const bool isEmpty = dictionary.begin() == dictionary.end();
    if (isEmpty && !dictionary.Errors().empty())
        throw Failure("cannot read the dictionary " + path + ": " + dictionary.Errors().front());
    for (const std::string& error : dictionary.Errors())
        std::cerr << "hexmire: loading reports " << VisibleText(error) << '\n';
}

void List(const DictionaryOptions& options) {
    const std::string path = FindDictionary(options.Dictionary);
    const LoadedDictionary dictionary(path);
    TellErrors(dictionary, path);
    std::vector<Row> rows{{"NAME", "PRIMARY", "REPLY", "DESCRIPTION"}};
    for (const SECSTransPtr& trans : dictionary) {
        if (!Matches(options.Pattern, *trans)) continue;
        const Row row = RowOf(*trans);
        rows.push_back(row);
        if (!options.Json) continue;
        std::cout << Json{{"name", Utf8FromLatin1(trans->Name())},
                          {"stream", trans->Primary()->Stream()},
                          {"function", trans->Primary()->Func()},
                          {"reply_expected", HasReply(*trans)},
                          {"description", Utf8FromLatin1(trans->Description())}}
                         .dump()
                  << '\n';
    }
    if (rows.size() == 1)
        throw Failure(options.Pattern.empty()
                          ? "no transactions in " + path
                          : "no transaction matches '" + options.Pattern + "' in " + path);
    if (!options.Json) PrintTable(rows);
    std::cout << std::flush;
}

// --- show ----------------------------------------------------------------------------------------

SECSTransPtr Find(const LoadedDictionary& dictionary, const std::string& name) {
    SECSTransPtr found;
    for (const SECSTransPtr& trans : dictionary) {
        if (trans->Name() == name) return trans;
        if (found == nullptr && EqualsIgnoringCase(trans->Name(), name)) found = trans;
    }
    return found;
}

std::string Title(const std::string& name, const std::string& description) {
    return "* " + name + (description.empty() ? "" : ": " + description) + '\n';
}

void Show(const DictionaryOptions& options) {
    const std::string path = FindDictionary(options.Dictionary);
    const LoadedDictionary dictionary(path);
    TellErrors(dictionary, path);
    const SECSTransPtr trans = Find(dictionary, Latin1FromUtf8(options.Name));
    if (trans == nullptr) throw Failure("no transaction '" + options.Name + "' in " + path);
    const bool hasReply = HasReply(*trans);
    std::string text = Title(trans->Name(), trans->Description()) +
                       ExactSml(*trans->Primary(), hasReply, SmlNotes::Names);
    if (hasReply) {
        const SECSMessage& secondary = *trans->Secondary();
        text += Title("reply " + secondary.Name(), secondary.Description()) +
                ExactSml(secondary, false, SmlNotes::Names);
    } else {
        text += "* no reply\n";
    }
    std::cout << OutputText(Utf8FromLatin1(text)) << std::flush;
}

// --- from-sml ------------------------------------------------------------------------------------

void FromSml(const DictionaryOptions& options) {
    const Input input = ReadInput(options.Sml);
    bool isItem = false;
    const auto messages =
        ParseInput(input, options.Latin1 ? TextEncoding::Latin1 : TextEncoding::Utf8, isItem);
    if (isItem)
        throw UsageError(PlaceIn(input, 1, 1) +
                         "expected a stream and function such as S1F1, found an item");
    try {
        std::cout << DictionaryXml(messages) << std::flush;
    } catch (const UsageError& error) {
        throw UsageError(input.Name + ": " + error.what());
    }
}

void AddDictionaryOption(Command command, DictionaryOptions& options) {
    command.Option("--dictionary", options.Dictionary, "Dictionary file, default: Default.xml")
        .TypeName("FILE");
}

}  // namespace

void AddDictionaryCommands(Command command, DictionaryOptions& options) {
    const Command check = command.Add(
        "check",
        "Tell what in dictionary files loads otherwise than it looks, one line each; exit status "
        "1 when there is any");
    check.Option("files", options.Files, "Dictionary files").Required().TypeName("FILE");
    check.Flag("--json", options.Json, "Write JSON objects, the last one being the summary");
    check.Run([&options] { Check(options); });

    const Command list = command.Add("list", "List the transactions");
    list.Option("pattern",
                options.Pattern,
                "Only names that are like this, '*' and '?' being any characters, or names "
                "and descriptions with this in them")
        .TypeName("PATTERN");
    AddDictionaryOption(list, options);
    list.Flag("--json", options.Json, "Write one JSON object a line");
    list.Run([&options] { List(options); });

    const Command show =
        command.Add("show", "Show a transaction as SML with the names of its items");
    show.Option("name", options.Name, "Name of the transaction").Required().TypeName("NAME");
    AddDictionaryOption(show, options);
    show.Run([&options] { Show(options); });

    const Command fromSml = command.Add(
        "from-sml", "Write a dictionary file of SML messages, each reply behind its primary");
    fromSml.Option("input", options.Sml, "A file of SML messages; '-': the standard input")
        .TypeName("FILE");
    fromSml.Flag("--latin1", options.Latin1, "The SML is in ISO 8859-1, not in UTF-8");
    fromSml.Run([&options] { FromSml(options); });
}

}  // namespace hexmire::program
