#include <hexmire/control/Hexmire.h>
#include <hexmire/control/detail/Control.h>
#include <hexmire/control/detail/HexmireAccess.h>

/// The public face: life, status, operations, placement.
namespace hexmire {

namespace {

constexpr std::int32_t kFaceSize = 615;

}  // namespace

Hexmire::Hexmire(const Platform& platform)
    : control_(std::make_unique<detail::Control>(platform)) {}

Hexmire::~Hexmire() = default;

HexmireEvents& Hexmire::Events() noexcept { return control_->Events(); }

bool Hexmire::Connected() { return control_->Connected(); }

bool Hexmire::PortOpened() { return control_->PortOpened(); }

std::int32_t Hexmire::CurrentBaud() noexcept { return control_->CurrentBaud(); }

std::int32_t Hexmire::CurrentHSMSConnectionType() noexcept {
    return control_->CurrentHSMSConnectionType();
}

std::int32_t Hexmire::ErrorCode() const noexcept { return control_->ErrorCode(); }

std::shared_ptr<hexmire::SECSDictionary> Hexmire::SECSDictionary() const noexcept {
    return control_->Dictionary();
}

void Hexmire::OpenPort() { control_->OpenPort(); }

void Hexmire::ClosePort() { control_->ClosePort(); }

void Hexmire::ControlTerminate() { control_->ControlTerminate(); }

void Hexmire::LoadXMLDictionary() { control_->LoadXMLDictionary(); }

SECSTransPtr Hexmire::NewSECSTransaction() { return control_->NewSECSTransaction(); }

SECSTransPtr Hexmire::NewSECSTransaction(const Variant& value) {
    return control_->NewSECSTransaction(value);
}

SECSTransPtr Hexmire::NewSECSTransaction(std::string_view name) {
    return control_->NewSECSTransaction(name);
}

void Hexmire::InitProperties() {
    if (!control_->InitTimer()) return;
    // The texts as they are held: a getter that fails must not become the setting.
    const detail::ControlSettings& held = control_->Settings();
    BaudRate(BaudRate());
    ConnectionHost(ConnectionHost());
    ConnectionPortType(ConnectionPortType());
    ConnectionRetryLimit(ConnectionRetryLimit());
    DeviceID(DeviceID());
    DuplicateBlockCheck(DuplicateBlockCheck());
    HSMSConnectionType(HSMSConnectionType());
    InterleaveCheck(InterleaveCheck());
    LocalIPAddress(held.LocalIPAddress);
    LocalIPPort(LocalIPPort());
    TraceEnabled(TraceEnabled());
    RemoteIPAddress(held.RemoteIPAddress);
    RemoteIPPort(RemoteIPPort());
    SECSDictionaryFile(held.SECSDictionaryFile);
    SECSLogFile(held.SECSLogFile);
    SerialPort(held.SerialPort);
    SystemBytesCheck(SystemBytesCheck());
    T1Timeout(T1Timeout());
    T2Timeout(T2Timeout());
    T3Timeout(T3Timeout());
    T4Timeout(T4Timeout());
    T5Timeout(T5Timeout());
    T6Timeout(T6Timeout());
    T7Timeout(T7Timeout());
    T8Timeout(T8Timeout());
    TimeOutRetry(TimeOutRetry());
    RecipeFileEnabled(RecipeFileEnabled());
    RecipeSendPath(held.RecipeSendPath);
    RecipeRecvPath(held.RecipeRecvPath);
    SECSILogPath(held.SECSILogPath);
}

std::int32_t Hexmire::Width() const noexcept { return kFaceSize; }

std::int32_t Hexmire::Height() const noexcept { return kFaceSize; }

// Whatever the container asks for, the face keeps its size.
void Hexmire::Resize(std::int32_t /*width*/, std::int32_t /*height*/) noexcept {}

std::string Hexmire::Caption() const { return "SxFx"; }

namespace detail {

std::shared_ptr<SECSDictionary> HexmireAccess::SECSTransInUse(Hexmire& hexmire) noexcept {
    return hexmire.control_->SECSTransInUse();
}

void HexmireAccess::TriggerError(Hexmire& hexmire,
                                 std::int32_t errorCode,
                                 const std::string& errorText,
                                 std::int32_t errorLine) {
    hexmire.control_->TriggerError(errorCode, errorText, errorLine);
}

void HexmireAccess::SendS9F7(Hexmire& hexmire,
                             std::int32_t stream,
                             std::int32_t function,
                             std::int32_t systemBytes) {
    hexmire.control_->SendS9F7(stream, function, systemBytes);
}

CLogFile* HexmireAccess::Log(Hexmire& hexmire) noexcept { return hexmire.control_->Log(); }

}  // namespace detail

}  // namespace hexmire
