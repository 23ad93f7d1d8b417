#include "DictionaryCheck.h"

#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Text.h>

#include "DictionaryValue.h"
#include "LoadedDictionary.h"
#include "MessageRecord.h"
#include "XmlTree.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <utility>

namespace hexmire::program {

namespace {

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

struct MessageKey {
    int Stream = -1;
    int Function = -1;

    [[nodiscard]] bool IsKnown() const { return Stream >= 0 && Function >= 0; }
    [[nodiscard]] std::string Text() const { return StreamFunction(Stream, Function); }
    // The check takes the comparison with 0 in what the compiler makes for a null pointer.
    auto operator<=>(const MessageKey&) const = default;  // NOLINT(modernize-use-nullptr)
};

class Checker {
public:
    std::vector<DictionaryFinding> Run(const XmlElement& root) {
        for (const XmlElement& child : root.Children) {
            if (child.Name == "Trans") {
                Transaction(child);
            } else {
                Find(child, "element " + Quoted(child.Name) + " is not loaded; \"Trans\" is");
            }
        }
        std::stable_sort(findings_.begin(), findings_.end(), [](const auto& a, const auto& b) {
            return a.Line < b.Line;
        });
        return std::move(findings_);
    }

private:
    void Find(const XmlElement& element, std::string text) {
        findings_.push_back({element.Line, std::move(text)});
    }

    /// The attribute's value; a finding and "" when it is not there.
    std::string Required(const XmlElement& element, const char* name) {
        const std::string* value = element.Attribute(name);
        if (value == nullptr) Find(element, element.Name + " has no attribute " + Quoted(name));
        return value == nullptr ? "" : *value;
    }

    /// The first child of that name, which is the one that is loaded.
    const XmlElement* OnlyChild(const XmlElement& element, const char* name) {
        const XmlElement* first = nullptr;
        for (const XmlElement& child : element.Children) {
            if (child.Name != name) continue;
            if (first != nullptr) Find(child, "a further " + child.Name + " is not loaded");
            if (first == nullptr) first = &child;
        }
        if (first == nullptr) Find(element, element.Name + " has no " + name);
        return first;
    }

    void OthersAreNotLoaded(const XmlElement& element, std::initializer_list<const char*> known) {
        for (const XmlElement& child : element.Children) {
            if (std::find(known.begin(), known.end(), child.Name) == known.end())
                Find(child,
                     "element " + Quoted(child.Name) + " in " + element.Name + " is not loaded");
        }
    }

    void Transaction(const XmlElement& trans) {
        CheckName(trans, Required(trans, "Name"));
        Required(trans, "Desc");
        OthersAreNotLoaded(trans, {"Primary", "Secondary"});
        const XmlElement* primary = OnlyChild(trans, "Primary");
        const XmlElement* secondary = OnlyChild(trans, "Secondary");
        const MessageKey first = primary == nullptr ? MessageKey() : Message(*primary);
        const MessageKey second = secondary == nullptr ? MessageKey() : Message(*secondary);
        if (first.IsKnown()) CheckPrimary(*primary, first);
        if (second.IsKnown() && second.Function % 2 != 0)
            Find(*secondary, "secondary " + second.Text() + ": functions of secondaries are even");
        else if (first.IsKnown() && second.IsKnown() && first.Function % 2 != 0 &&
                 second != MessageKey{first.Stream, first.Function + 1})
            Find(*secondary,
                 "secondary " + second.Text() + " is no reply to " + first.Text() + ", " +
                     StreamFunction(first.Stream, first.Function + 1) + " is");
    }

    void CheckName(const XmlElement& trans, const std::string& name) {
        if (trans.Attribute("Name") == nullptr) return;
        if (name.empty()) return Find(trans, "a transaction without a name cannot be asked for");
        const auto [taken, isNew] = names_.emplace(name, trans.Line);
        if (!isNew)
            Find(trans,
                 "the name " + Quoted(name) + " is taken in line " + std::to_string(taken->second) +
                     ", whose transaction is found by it");
    }

    /// A received primary goes to the first template of its stream and function.
    void CheckPrimary(const XmlElement& primary, const MessageKey& key) {
        if (key.Function % 2 == 0)
            return Find(primary, "primary " + key.Text() + ": functions of primaries are odd");
        const auto [taken, isNew] = primaries_.emplace(key, primary.Line);
        if (!isNew)
            Find(primary,
                 "no received " + key.Text() + " comes here: the one in line " +
                     std::to_string(taken->second) + " takes them all");
    }

    MessageKey Message(const XmlElement& message) {
        const MessageKey key{Whole(message, "Stream", 127), Whole(message, "Func", 255)};
        Required(message, "Name");
        Required(message, "Desc");
        OthersAreNotLoaded(message, {"Root"});
        if (const XmlElement* root = OnlyChild(message, "Root")) {
            const XmlElement* first = nullptr;
            for (const XmlElement& item : root->Children) {
                if (item.Name == "Item" && first != nullptr)
                    Find(item, "only the first item of a Root is sent");
                if (item.Name == "Item" && first == nullptr) first = &item;
            }
            Items(*root);
        }
        return key;
    }

    /// -1 for none and for one that is wrong.
    int Whole(const XmlElement& message, const char* name, int largest) {
        const std::string text = Required(message, name);
        if (message.Attribute(name) == nullptr) return -1;
        int number = -1;
        const char* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc() && stop == end && number >= 0 && number <= largest) return number;
        Find(message,
             std::string(name) + ' ' + Quoted(text) + " is no number from 0 to " +
                 std::to_string(largest));
        return -1;
    }

    void Items(const XmlElement& parent) {  // NOLINT(misc-no-recursion)
        OthersAreNotLoaded(parent, {"Item"});
        for (const XmlElement& item : parent.Children) {
            if (item.Name == "Item") Item(item);
        }
    }

    void Item(const XmlElement& item) {  // NOLINT(misc-no-recursion)
        Required(item, "Name");
        Required(item, "Desc");
        const std::string format = Required(item, "Format");
        const std::string isArray = Required(item, "IsArray");
        const std::string value = Required(item, "Value");
        const std::int32_t code = ModGeneral::TextToItemFormat(format);
        if (item.Attribute("Format") != nullptr && code == FormatVar &&
            !EqualsIgnoringCase(format, "V"))
            Find(item,
                 "format " + Quoted(format) +
                     " is none of L B BOOL A I1 I2 I4 I8 U1 U2 U4 U8 F4 F8 V and means V");
        const bool isYes = EqualsIgnoringCase(isArray, "YES");
        if (item.Attribute("IsArray") != nullptr && !isYes && !EqualsIgnoringCase(isArray, "NO"))
            Find(item, "IsArray " + Quoted(isArray) + " means NO; YES or NO is expected");
        if (std::string problem = ValueProblem(code, isYes, value); !problem.empty())
            Find(item, std::move(problem));
        if (code != FormatList && !item.Children.empty())
            Find(item, "items below one of format " + format + " are not loaded; L holds items");
        Items(item);
    }

    std::vector<DictionaryFinding> findings_;
    std::map<std::string, std::size_t> names_;
    std::map<MessageKey, std::size_t> primaries_;
};

}  // namespace

CheckedDictionary CheckDictionary(const std::string& path) {
    const XmlTree tree = ReadXmlTree(path);
    if (tree.ErrorLine != 0) return {.Findings = {{tree.ErrorLine, tree.Error}}};
    CheckedDictionary checked;
    checked.Findings = Checker().Run(tree.Root);
    checked.Transactions = static_cast<std::size_t>(std::count_if(
        tree.Root.Children.begin(), tree.Root.Children.end(), [](const XmlElement& element) {
            return element.Name == "Trans";
        }));
    if (checked.Transactions == 0)
        checked.Findings.push_back({tree.Root.Line, "no transactions in the file"});
    if (!checked.Findings.empty()) return checked;
    // What only loading tells, such as a document that is not valid after its own DTD.
    const LoadedDictionary loaded(path);
    for (const std::string& error : loaded.Errors())
        checked.Findings.push_back({tree.Root.Line, "loading reports " + error});
    return checked;
}

}  // namespace hexmire::program
