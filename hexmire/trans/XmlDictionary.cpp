#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>
#include <hexmire/trans/XmlDictionary.h>

#include <string>
#include <string_view>
#include <vector>

namespace hexmire::detail {

namespace {

using Node = std::shared_ptr<const IXMLNode>;

constexpr RoutineName Routine(const char* name) { return {"Hexmire", name}; }

bool IsElement(const IXMLNode& node, std::string_view name) {
    return node.IsElement() && node.Name() == name;
}

/// First direct child element of that name; fault 91 when there is none.
Node RequireChild(const IXMLNode& parent, std::string_view name) {
    for (Node child = parent.FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (IsElement(*child, name)) return child;
    }
    throw Fault(FaultNumber::ObjectNotSet);
}

std::string RequireAttribute(const IXMLNode& node, std::string_view name) {
    std::optional<std::string> value = node.Attribute(name);
    if (!value.has_value()) throw Fault(FaultNumber::ObjectNotSet);
    return *std::move(value);
}

void ReadMessage(SECSMessage& message, const IXMLNode& node) {
    message.Stream(ToLong(RequireAttribute(node, "Stream")));
    message.Func(ToLong(RequireAttribute(node, "Func")));
    message.Name(RequireAttribute(node, "Name"));
    message.Description(RequireAttribute(node, "Desc"));
    const Node root = RequireChild(node, "Root");
    for (Node child = root->FirstChild(); child != nullptr; child = child->NextSibling()) {
        CreateItemNode(message.Root(), child);
    }
}

/// One item without its children; none when the node is no item.
SECSItemPtr ReadItem(SECSItem& parent, const IXMLNode& node) {
    if (!IsElement(node, "Item")) return nullptr;
    SECSItemPtr item = parent.AddNew(parent.ItemCount() + 1);
    if (item == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    item->Name(RequireAttribute(node, "Name"));
    item->Description(RequireAttribute(node, "Desc"));
    item->Format(ModGeneral::TextToItemFormat(RequireAttribute(node, "Format")));
    const bool isArray = UpperCase(RequireAttribute(node, "IsArray")) == "YES";
    const std::string value = RequireAttribute(node, "Value");
    item->Value(isArray ? ModGeneral::lAssignArrayValue(*item, value)
                        : ModGeneral::lAssignValue(*item, value));
    return item;
}

/// The nodes of a parent that are still to be read.
struct Step {
    SECSItemPtr Parent;
    Node Next;
};

}  // namespace

void CreateItemNode(const SECSItemPtr& parent, const Node& node) {
    std::vector<Step> steps;  // In place of the machine's stack: items nest to any depth.
    const auto read = [&steps](const SECSItemPtr& list, const IXMLNode& next) {
        RunFreeRoutine(Routine("CreateItemNode"), [&] {
            const SECSItemPtr item = ReadItem(*list, next);
            if (item != nullptr) steps.push_back({item, next.FirstChild()});
        });
    };
    read(parent, *node);
    while (!steps.empty()) {
        const Step step = steps.back();
        if (step.Next == nullptr) {
            steps.pop_back();
        } else {
            steps.back().Next = step.Next->NextSibling();
            read(step.Parent, *step.Next);
        }
    }
}

void CreateTransObject(SECSDictionary& dictionary, const Node& node) {
    RunFreeRoutine(Routine("CreateTransObject"), [&] {
        const SECSTransPtr trans = dictionary.AddNewTrans(dictionary.TransCount() + 1);
        if (trans == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        trans->Name(RequireAttribute(*node, "Name"));
        trans->Description(RequireAttribute(*node, "Desc"));
        ReadMessage(*trans->Primary(), *RequireChild(*node, "Primary"));
        ReadMessage(*trans->Secondary(), *RequireChild(*node, "Secondary"));
    });
}

std::vector<Node> SelectTransactions(const IXMLDocument& document) {
    const Node root = document.DocumentElement();
    if (root == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    std::vector<Node> selected;
    for (Node child = root->FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (IsElement(*child, "Trans")) selected.push_back(child);
    }
    return selected;
}

}  // namespace hexmire::detail
