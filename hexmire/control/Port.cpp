#include <hexmire/control/detail/Control.h>
#include <hexmire/support/Fault.h>
#include <hexmire/trans/XmlDictionary.h>

/// Opening and closing the port, the driver's link events, the dictionary file.
namespace hexmire::detail {

namespace {

// The place of the load among the loader's statements.
constexpr std::int32_t kLoadStatement = 2;

}  // namespace

bool Control::Connected() {
    bool result = false;
    RunOwn("Get Connected", [&] {
        connected_ = RequireDriver().LinkStatus();
        result = connected_;
    });
    return result;
}

bool Control::PortOpened() {
    bool result = false;
    RunOwn("Get PortOpened", [&] {
        portOpened_ = RequireDriver().LinkStatus();
        result = portOpened_;
    });
    return result;
}

void Control::OpenPort() {
    constexpr const char* kRoutine = "OpenPort";
    RunOwn(kRoutine, [&] {
        RequireAlive();
        if (PortOpened()) {
            RaiseOwnError(kRoutine, 1090);
            return;
        }
        PushAll(SettingPushes::OpenOrder());
        const std::shared_ptr<SECSIService> driver = driver_;
        RequireDriver().OpenLink();
    });
}

void Control::ClosePort() {
    constexpr const char* kRoutine = "ClosePort";
    RunOwn(kRoutine, [&] {
        RequireAlive();
        if (!PortOpened()) {
            RaiseOwnError(kRoutine, 1089);
            return;
        }
        const std::shared_ptr<SECSIService> driver = driver_;
        RequireDriver().CloseLink();
    });
}

void Control::LoadXMLDictionary() {
    constexpr const char* kRoutine = "LoadXMLDictionary";
    RunOwn(kRoutine, [&] {
        const std::shared_ptr<IXMLDocument> document = xmlDocument_;
        const std::shared_ptr<hexmire::SECSDictionary> dictionary = dictionary_;
        if (document == nullptr || dictionary == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        if (document->Load(settings_.SECSDictionaryFile)) {
            for (const auto& trans : SelectTransactions(*document)) {
                if (dictionary_ != dictionary) return;  // A handler has ended the control.
                CreateTransObject(*dictionary, trans);
            }
        } else if (document->ParseErrorCode() != 0) {
            RaiseOwnError(kRoutine, 2001, {}, kLoadStatement);
        }
    });
}

// --- Link events of the driver -----------------------------------------------------------------

void Control::moSECSIService_Connect() {
    if (tornDown_) return;
    RunOwn("moSECSIService_Connect", [&] { Raise(events_.Connect); });
}

void Control::moSECSIService_Disconnect(std::int32_t errorCode, const std::string& errorText) {
    if (tornDown_) return;
    RunOwn("moSECSIService_Disconnect", [&] {
        Raise(events_.Disconnect, errorCode, errorText);
        errorCode_ = errorCode;
    });
}

void Control::moSECSIService_Error(std::int32_t errorCode, const std::string& errorText) {
    if (tornDown_) return;
    RunOwn("moSECSIService_Error", [&] { RaiseError(errorCode, errorText, 0); });
}

}  // namespace hexmire::detail
