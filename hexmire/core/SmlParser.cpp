#include <hexmire/core/detail/SmlHeader.h>
#include <hexmire/core/detail/SmlLayout.h>
#include <hexmire/core/detail/SmlScanner.h>
#include <hexmire/core/detail/SmlValues.h>
#include <hexmire/sml.h>
#include <hexmire/support/detail/ObjectMaker.h>

#include <new>
#include <optional>
#include <utility>

namespace hexmire {

namespace detail {

namespace {

constexpr const char* kOneReading = "a text that can be read in one way only";

/// An item whose format has been read.
struct Head {
    std::size_t Start = 0;  // Offset of "<".
    std::size_t Level = 0;
    SmlFormat Format;
};

/// Reads one message.
class Parser {
public:
    Parser(SmlScanner& scanner, bool isOnly) : scanner_(scanner), layout_(scanner.Text(), isOnly) {}

    /// True when a text was left open that only more text could close.
    [[nodiscard]] bool HasOpenText() const noexcept { return hasOpenText_; }

    void Read(ParsedSml& parsed) {
        scanner_.SkipBlanks();
        const std::size_t start = scanner_.Position();
        const SmlHeader header = ReadSmlHeader(scanner_);
        layout_.Begin(start, header.Text());

        SECSMessagePtr message = ObjectMaker::Make<SECSMessage>(SiteRef());
        message->Stream(header.Stream);
        message->Func(header.Function);
        scanner_.SkipBlanks();
        if (scanner_.IsAt('<')) {
            ReadBody(message->Root());
            scanner_.SkipBlanks();
        } else if (!scanner_.IsAt('.')) {
            scanner_.Fail(R"("<" or ".")");
        }
        scanner_.Take('.');
        parsed.ReplyExpected = header.ReplyExpected;
        parsed.Name = header.Name;
        parsed.Message = std::move(message);
    }

private:
    /// A list whose ">" is still to come.
    struct OpenList {
        SECSItemPtr Item;
        SmlCount Count;
    };

    void ReadBody(const SECSItemPtr& root) {
        ReadItem(root);
        while (!lists_.empty()) {  // In place of the machine's stack: lists nest to any depth.
            scanner_.SkipBlanks();
            if (scanner_.IsAt('<')) {
                const SECSItemPtr list = lists_.back().Item;
                ReadItem(list);
            } else if (scanner_.IsAt('>')) {
                CloseList();
            } else {
                scanner_.Fail(R"("<" or ">")");
            }
        }
    }

    /// A list is left open.
    void ReadItem(const SECSItemPtr& parent) {
        const Head head = ReadHead();
        const SECSItemPtr item = parent->AddNew(parent->ItemCount() + 1);
        if (item == nullptr) throw std::bad_alloc();
        item->Format(head.Format.Code);
        layout_.Item(head.Start, head.Level, head.Format.Name);
        if (head.Format.Code == FormatList) {
            const SmlCount count = ReadSmlCount(scanner_);
            layout_.List(head.Start, head.Level);
            lists_.push_back({item, count});
            return;
        }
        item->Value(ReadValue(head));
        layout_.ItemClosed(scanner_.Position());
        scanner_.Take('>');
    }

    Head ReadHead() {
        Head head{scanner_.Position(), lists_.size(), {}};
        scanner_.Take('<');
        scanner_.SkipBlanks();
        const std::size_t start = scanner_.Position();
        const auto format = FindSmlFormat(scanner_.Word(","));
        if (!format) scanner_.FailAt(start, "a format name");
        head.Format = *format;
        return head;
    }

    void CloseList() {
        const OpenList& list = lists_.back();
        CheckSmlCount(list.Count, static_cast<std::size_t>(list.Item->ItemCount()), "items");
        lists_.pop_back();
        layout_.ListClosed(scanner_.Position(), lists_.size());
        scanner_.Take('>');
    }

    Variant ReadValue(const Head& head) {
        if (head.Format.Code == FormatVar) return ReadAnyText(head);
        const SmlCount count = ReadSmlCount(scanner_);
        if (head.Format.Code == FormatAscii) {
            std::string text = ReadText(head);
            CheckSmlCount(count, text.size(), "characters");
            return text.empty() ? Variant() : Variant(std::move(text));
        }
        SmlValue value = ReadSmlElements(scanner_, head.Format.Code);
        CheckSmlCount(count, value.Count, "elements");
        return std::move(value.Value);
    }

    std::string ReadText(const Head& head) {
        scanner_.SkipBlanks();
        const std::size_t start = scanner_.Position();
        const bool isRendered =
            layout_.Holds() && scanner_.IsAt('\'') && start == head.Start + 4;  // "< A '"
        if (!isRendered) return ReadSmlParts(scanner_).Text;
        const auto end = layout_.TextEnd(start + 1, head.Level, "' >");
        if (!end || IsInParts(start, *end, head.Level)) return ReadForeignParts(head.Level);
        scanner_.MoveTo(*end + 2);  // at ">"
        return std::string(scanner_.Text().substr(start + 1, *end - start - 1));
    }

    /// The renderer did not write this item, or its end is not there yet.
    std::string ReadForeignParts(std::size_t level) {
        hasOpenText_ = true;
        std::string text = ReadSmlParts(scanner_).Text;
        hasOpenText_ = !layout_.CanEndItem(scanner_.Position(), level);
        layout_.Lose();
        return text;
    }

    /// The characters from a quote at `start` to the one at `end` also read as several parts that
    /// end in an earlier line. Throws SmlError when the parts end where the text does.
    bool IsInParts(std::size_t start, std::size_t end, std::size_t level) {
        const std::string_view text = scanner_.Text().substr(0, end + 3);  // up to ">"
        if (text.substr(start + 1, end - start - 1).find('\'') == std::string_view::npos)
            return false;
        SmlScanner trial(text, start);
        std::size_t count = 0;
        try {
            count = ReadSmlParts(trial).Count;
        } catch (const SmlError&) {
            return false;
        }
        if (count < 2) return false;
        if (trial.Position() == end + 2) {
            throw SmlError{start, kOneReading, "quotes that may be part of it", false};
        }
        return layout_.CanEndItem(trial.Position(), level);
    }

    /// The text of an item of any format, as it stands but for one blank at either end.
    Variant ReadAnyText(const Head& head) {
        const std::string_view text = scanner_.Text();
        std::size_t start = scanner_.Position();
        std::size_t end = start;
        if (!scanner_.IsBoundary(start) || scanner_.IsComment(start))
            scanner_.Fail("a blank or \">\"");
        if (const auto found = layout_.TextEnd(start, head.Level, " >")) {
            end = *found + 1;
        } else {
            hasOpenText_ = hasOpenText_ || layout_.Holds();
            layout_.Lose();
            while (end < text.size() && !scanner_.IsLineEnd(end) &&
                   (text[end] != '>' || !CanFollowSmlItem(scanner_, end + 1)))
                ++end;
        }
        scanner_.MoveTo(end);
        if (!scanner_.IsAt('>')) scanner_.Fail("\">\"");
        if (start < end && text[start] == ' ') ++start;
        if (start < end && text[end - 1] == ' ') --end;
        return start == end ? Variant() : Variant(text.substr(start, end - start));
    }

    SmlScanner& scanner_;
    SmlLayout layout_;
    std::vector<OpenList> lists_;
    bool hasOpenText_ = false;
};

/// Runs `read`, which throws what it finds wrong, and tells that in the result instead.
template <class Read>
ParsedSml Guarded(const SmlScanner& scanner, const Parser& parser, Read read) noexcept {
    ParsedSml parsed;
    try {
        try {
            read(parsed);
        } catch (const SmlError& error) {
            parsed = ParsedSml();
            const SmlPlace place = PlaceOf(scanner.Text(), error.Offset);
            parsed.Line = place.Line;
            parsed.Column = place.Column;
            parsed.IsIncomplete = error.IsAtEnd || parser.HasOpenText();
            parsed.Error = "expected " + error.Expected + ", found " + error.Found;
        }
    } catch (...) {
        parsed = ParsedSml();
        parsed.Error = "out of memory";  // Short enough to need none.
    }
    return parsed;
}

}  // namespace

}  // namespace detail

ParsedSml ParseSml(std::string_view text) noexcept {
    detail::SmlScanner scanner(text);
    detail::Parser parser(scanner, true);
    return detail::Guarded(scanner, parser, [&](ParsedSml& parsed) {
        parser.Read(parsed);
        scanner.SkipBlanks();
        if (!scanner.IsAtEnd()) scanner.Fail("the end of the text");
    });
}

std::vector<ParsedSml> ParseSmlMessages(std::string_view text) {
    std::vector<ParsedSml> messages;
    text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
    detail::SmlScanner scanner(text);
    bool isAtEnd = false;
    while (!isAtEnd) {
        detail::Parser parser(scanner, false);
        ParsedSml parsed = detail::Guarded(scanner, parser, [&](ParsedSml& next) {
            scanner.SkipBlanks();
            isAtEnd = scanner.IsAtEnd();
            if (!isAtEnd) parser.Read(next);
        });
        if (!parsed.Error.empty()) isAtEnd = true;
        if (parsed.Message != nullptr || !parsed.Error.empty()) {
            messages.push_back(std::move(parsed));
        }
    }
    return messages;
}

}  // namespace hexmire
