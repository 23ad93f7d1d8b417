#include "DictionaryWriter.h"

#include <hexmire/core/ModGeneral.h>
#include <hexmire/hosting/Utf8.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/HexBytes.h>

#include "Failure.h"
#include "MessageRecord.h"

#include <algorithm>
#include <set>
#include <utility>

namespace hexmire::program {

namespace {

constexpr int kLastFunction = 255;

/// An attribute in quotes. XML has no characters below blank but tabulators and line ends.
std::string Attribute(const char* name, const std::string& text) {
    std::string value;
    for (const char character : Utf8FromLatin1(text)) {
        switch (character) {
            case '&':
                value += "&amp;";
                break;
            case '<':
                value += "&lt;";
                break;
            case '"':
                value += "&quot;";
                break;
            case '\t':
            case '\n':
            case '\r':
                value += "&#" + std::to_string(static_cast<int>(character)) + ';';
                break;
            default:
                value.push_back(character);
        }
    }
    return ' ' + std::string(name) + "=\"" + value + '"';
}

std::string ElementText(std::int32_t format, const Variant& element) {
    if (format == FormatBoolean) return ToBoolean(element) ? "T" : "F";
    if (format != FormatBinary) return ToText(element);
    const std::uint8_t byte = ToByte(element);
    return {HexDigit(byte >> 4U), HexDigit(byte)};
}

std::string ValueText(std::int32_t format, const Variant& value) {
    if (value.IsEmpty()) return {};
    if (!value.IsArray()) return ElementText(format, value);
    std::string text;
    const auto count = static_cast<std::int32_t>(value.ElementCount());
    for (std::int32_t index = 0; index < count; ++index)
        text += (index == 0 ? "" : " ") + ElementText(format, value.Element(index));
    return text;
}

/// The body bytes of a message whose body is this item.
std::vector<std::uint8_t> BytesOf(std::int32_t format, const Variant& value) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(format);
    item->Value(value);
    return EncodeBody(*message);
}

/// The loader makes the same value of the text.
bool ReadsBack(std::int32_t format, const Variant& value, const std::string& text) {
    const bool isXml = std::none_of(text.begin(), text.end(), [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return code < 0x20 && character != '\t' && character != '\n' && character != '\r';
    });
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(format);
    const Variant read = value.IsArray() ? ModGeneral::lAssignArrayValue(*item, text)
                                         : ModGeneral::lAssignValue(*item, text);
    return isXml && BytesOf(format, read) == BytesOf(format, value);
}

class Writer {
public:
    std::string Write(const std::vector<ParsedSml>& messages) {
        text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SECSDictionary>\n";
        for (std::size_t i = 0; i < messages.size(); ++i) {
            const ParsedSml& primary = messages[i];
            place_ = "message " + std::to_string(i + 1) + ", " + Key(primary) + ": ";
            if (primary.Message->Func() % 2 == 0)
                throw UsageError(place_ + "a secondary stands behind its primary");
            if (primary.Message->Func() == kLastFunction)
                throw UsageError(place_ +
                                 "no function is left for the reply, which is to be there");
            const bool isPair =
                i + 1 < messages.size() && Key(messages[i + 1]) == ReplyKey(primary);
            Transaction(primary, isPair ? &messages[i + 1] : nullptr);
            if (isPair) ++i;
        }
        return text_ + "</SECSDictionary>\n";
    }

private:
    static std::string Key(const ParsedSml& parsed) {
        return StreamFunction(parsed.Message->Stream(), parsed.Message->Func());
    }
    static std::string ReplyKey(const ParsedSml& parsed) {
        return StreamFunction(parsed.Message->Stream(), parsed.Message->Func() + 1);
    }

    void Transaction(const ParsedSml& primary, const ParsedSml* secondary) {
        const std::string name = primary.Name.empty() ? Key(primary) : primary.Name;
        if (!names_.insert(name).second)
            throw UsageError(place_ + "the name \"" + Utf8FromLatin1(name) +
                             "\" is taken; give it another, such as Other:'" + Key(primary) + "'");
        text_ += "  <Trans" + Attribute("Name", name) + Attribute("Desc", "") + ">\n";
        Message("Primary", *primary.Message, primary.Message->Func(), name);
        if (secondary != nullptr) {
            Message("Secondary",
                    *secondary->Message,
                    secondary->Message->Func(),
                    secondary->Name.empty() ? Key(*secondary) : secondary->Name);
        } else {
            const SECSMessagePtr empty = New<SECSMessage>();
            empty->Stream(primary.Message->Stream());
            Message("Secondary",
                    *empty,
                    primary.Message->Func() + 1,
                    primary.ReplyExpected ? ReplyKey(primary) : "");
        }
        text_ += "  </Trans>\n";
    }

    void Message(const char* element,
                 const SECSMessage& message,
                 std::int32_t function,
                 const std::string& name) {
        text_ += "    <" + std::string(element) +
                 Attribute("Stream", std::to_string(message.Stream())) +
                 Attribute("Func", std::to_string(function)) + Attribute("Name", name) +
                 Attribute("Desc", "") + ">\n";
        if (message.Root()->ItemCount() == 0) {
            text_ += "      <Root/>\n";
        } else {
            text_ += "      <Root>\n";
            Item(message.Item(1), 0);
            text_ += "      </Root>\n";
        }
        text_ += "    </" + std::string(element) + ">\n";
    }

    void Item(const SECSItemPtr& item, std::size_t level) {  // NOLINT(misc-no-recursion)
        constexpr std::size_t kDeepest = 240;                // The loader's parser takes no more.
        if (level > kDeepest) throw UsageError(place_ + "lists nest too deep for an XML file");
        const std::int32_t format = item->Format();
        const Variant value = item->Value();
        const std::string text = format == FormatList ? "" : ValueText(format, value);
        if (format != FormatList && !ReadsBack(format, value, text))
            throw UsageError(place_ + "a dictionary file cannot hold this value: <" +
                             ModGeneral::ItemFormatToText(format) + ' ' + Utf8FromLatin1(text) +
                             '>');
        const std::string indent(8 + 2 * level, ' ');
        text_ += indent + "<Item" + Attribute("Name", "") + Attribute("Desc", "") +
                 Attribute("Format", ModGeneral::ItemFormatToText(format)) +
                 Attribute("IsArray", value.IsArray() ? "YES" : "NO") + Attribute("Value", text);
        if (item->ItemCount() == 0) {
            text_ += "/>\n";
            return;
        }
        text_ += ">\n";
        for (const SECSItemPtr& child : *item)
            Item(child, level + 1);
        text_ += indent + "</Item>\n";
    }

    std::string text_;
    std::string place_;
    std::set<std::string> names_;
};

}  // namespace

std::string DictionaryXml(const std::vector<ParsedSml>& messages) {
    return Writer().Write(messages);
}

}  // namespace hexmire::program
