#include <hexmire/core/IMessageSite.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/Decoder.h>
#include <hexmire/core/detail/Encoder.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/core/detail/SmlWriter.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>
#include <hexmire/support/detail/ObjectMaker.h>

#include <algorithm>
#include <utility>

namespace hexmire {

namespace {

constexpr std::int32_t kLargestStream = 127;
constexpr std::int32_t kLargestFunction = 255;

constexpr RoutineName Routine(const char* name) { return {"SECSMessage", name}; }

}  // namespace

SECSMessage::SECSMessage(PassKey /*key*/, SiteRef site) : site_(std::move(site)) {
    root_ = detail::ObjectMaker::Make<SECSItem>(site_);
    root_->Name("Root");
    root_->Format(FormatList);
}

SECSMessage::~SECSMessage() { detail::SECSItemAccess::TearDown(*root_); }

template <>
std::shared_ptr<SECSMessage> New<SECSMessage>() {
    return detail::ObjectMaker::MakeForHost<SECSMessage>("SECSMessage");
}

void SECSMessage::Stream(std::int32_t value) {
    if (value >= 0 && value <= kLargestStream) {
        stream_ = value;
        return;
    }
    RunRoutine(
        site_, Routine("Let Stream"), [&] { ReportError(site_, Routine("Let Stream"), 1013); });
}

void SECSMessage::Func(std::int32_t value) {
    if (value >= 0 && value <= kLargestFunction) {
        func_ = value;
        return;
    }
    RunRoutine(site_, Routine("Let Func"), [&] { ReportError(site_, Routine("Let Func"), 1014); });
}

std::string SECSMessage::Name() const {
    std::string text;
    RunRoutine(site_, Routine("Get Name"), [&] { text = name_; });
    return text;
}

void SECSMessage::Name(std::string_view value) {
    RunRoutine(site_, Routine("Let Name"), [&] { name_ = value; });
}

std::string SECSMessage::Description() const {
    std::string text;
    RunRoutine(site_, Routine("Get Description"), [&] { text = description_; });
    return text;
}

void SECSMessage::Description(std::string_view value) {
    RunRoutine(site_, Routine("Let Description"), [&] { description_ = value; });
}

void SECSMessage::Raw(Variant value) noexcept { raw_ = std::move(value); }

std::string SECSMessage::RawHex() const {
    const SiteScope scope(site_);
    std::string text;
    RunRoutine(site_, Routine("Get RawHex"), [&] {
        text = rawHexBytes_.IsEmpty() ? rawHex_ : ModGeneral::HexDumpArray(rawHexBytes_);
    });
    return text;
}

// --- Lookup ------------------------------------------------------------------------------------

SECSItemPtr SECSMessage::Item(const Variant& value) const {
    SECSItemPtr found;
    RunRoutine(site_, Routine("Get Item"), [&] { found = FindItem(value); });
    return found;
}

SECSItemPtr SECSMessage::Item(std::string_view name) const {
    SECSItemPtr found;
    RunRoutine(site_, Routine("Get Item"), [&] { found = FindItem(Variant(name)); });
    return found;
}

SECSItemPtr SECSMessage::FindItem(const Variant& value) const {
    const auto fail = [this](std::int32_t code) {
        ReportError(site_, Routine("Get Item"), code);
        return SECSItemPtr();
    };
    const std::int32_t count = root_->ItemCount();
    if (count == 0) return fail(1004);
    const auto children = detail::SECSItemAccess::AllItems(*root_);
    const VariantKind kind = value.Kind();
    if (kind == VariantKind::Integer || kind == VariantKind::Long) {
        const std::int32_t index =
            kind == VariantKind::Long ? value.AsLong() : std::int32_t{value.AsInteger()};
        if (index < 1 || index > count) return fail(1007);
        return (*children)[static_cast<std::size_t>(index) - 1];
    }
    if (kind != VariantKind::String || TrimBlanks(value.Text()).empty()) return fail(1008);
    const auto found =
        std::find_if(children->begin(), children->end(), [&](const SECSItemPtr& child) {
            return EqualsIgnoringCase(detail::SECSItemAccess::Name(*child), value.Text());
        });
    return found == children->end() ? fail(1009) : *found;
}

// --- Inside the library ------------------------------------------------------------------------

namespace detail {

void SECSMessageAccess::RawHex(SECSMessage& message, std::string text) {
    message.rawHexBytes_ = Variant();
    message.rawHex_ = std::move(text);
}

void SECSMessageAccess::CopyRawHex(SECSMessage& target, const SECSMessage& source) {
    if (source.rawHexBytes_.IsEmpty() && source.rawHex_.empty()) return;
    target.rawHexBytes_ = source.rawHexBytes_;
    target.rawHex_ = source.rawHex_;
}

void SECSMessageAccess::Build(SECSMessage& message) {
    const SiteScope scope(message.site_);
    RunRoutine(message.site_, Routine("Build"), [&] {
        std::vector<std::uint8_t> bytes;
        if (message.root_->ItemCount() > 0) {
            lBuildSECSMessage(bytes, message.root_->Item(std::int32_t{1}));
        }
        const auto length = static_cast<std::int32_t>(bytes.size());
        message.length_ = 0;  // Should memory end here, the bytes of before are not sent again.
        if (bytes.empty()) return;
        message.raw_ = std::move(bytes);
        message.rawHexBytes_ = message.raw_;
        message.length_ = length;
    });
}

void SECSMessageAccess::Build(SECSMessage& message, std::vector<std::uint8_t>& bytes) {
    Build(message);
    RunRoutine(message.site_, Routine("Build"), [&] {
        bytes.clear();
        if (message.length_ == 0) return;
        const auto built = message.raw_.View<std::uint8_t>();
        bytes.assign(built.begin(), built.end());
    });
}

namespace {

CLogFile* LogOf(IErrorSink* sink) {
    if (sink == nullptr || sink->Serves() == IErrorSink::Service::Errors) return nullptr;
    return static_cast<IMessageSite*>(sink)->Log();
}

}  // namespace

bool SECSMessageAccess::Parse(SECSMessage& message, std::span<const std::uint8_t> bytes) {
    const SiteScope scope(message.site_);
    bool ok = true;
    RunRoutine(message.site_, Routine("Parse"), [&] {
        const Variant body = Variant::Bytes(bytes);
        TakeRawHex(message, body);
        if (CLogFile* log = LogOf(scope.Site().Sink()); log != nullptr) {
            log->WriteLog("SECS I DATA Received : " + message.RawHex());
        }
        ok = DecodeTree(message, body);
    });
    return ok;
}

bool SECSMessageAccess::Decode(SECSMessage& message, std::span<const std::uint8_t> bytes) {
    bool ok = true;
    RunRoutine(
        message.site_, Routine("Parse"), [&] { ok = Decode(message, Variant::Bytes(bytes)); });
    return ok;
}

bool SECSMessageAccess::Decode(SECSMessage& message, const Variant& bytes) {
    const SiteScope scope(message.site_);
    bool ok = true;
    RunRoutine(message.site_, Routine("Parse"), [&] {
        TakeRawHex(message, bytes);
        ok = DecodeTree(message, bytes);
    });
    return ok;
}

void SECSMessageAccess::TakeRawHex(SECSMessage& message, const Variant& bytes) {
    if (bytes.ElementCount() == 0) {
        RawHex(message, ModGeneral::HexDumpArray(bytes));
    } else {
        message.rawHexBytes_ = bytes;
    }
}

bool SECSMessageAccess::DecodeTree(SECSMessage& message, const Variant& bytes) {
    message.raw_ = bytes;
    // A handler may set Raw while an item is reported.
    const Variant body = bytes;  // NOLINT(performance-unnecessary-copy-initialization)
    const SECSItemPtr root = message.root_;
    std::int64_t position = -1;
    return lParseSECSMessage(body, position, root, 1);
}

std::string SECSMessageAccess::ToSML(const SECSMessage& message, bool replyExpected) {
    const SiteScope scope(message.site_);
    std::string text;
    RunRoutine(message.site_, Routine("ToSML"), [&] {
        text = "S" + std::to_string(message.stream_) + "F" + std::to_string(message.func_);
        if (replyExpected) text += " W";
        text += "\r\n";
        if (message.root_->ItemCount() > 0)
            ItemToSML(message.root_->Item(std::int32_t{1}), 0, text);
        text += ".";
    });
    return text;
}

}  // namespace detail

}  // namespace hexmire
