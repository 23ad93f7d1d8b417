#include "ControlProperties.h"

#include "ScriptWords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace hexmire::program {

namespace {

using Names = std::vector<std::pair<std::string, std::int32_t>>;

std::string TextOf(const std::string& value) { return value; }
std::string TextOf(bool value) { return value ? "True" : "False"; }
template <class Number>
std::string TextOf(Number value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

void ReadValue(const std::string& text, std::string& value) { value = text; }

void ReadValue(const std::string& text, bool& value) {
    value = IsSameWord(text, "true");
    if (!value && !IsSameWord(text, "false"))
        throw BadCommand("'" + text + "' is neither True nor False");
}

template <class Number>
void ReadValue(const std::string& text, Number& value) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end)
        throw BadCommand("'" + text + "' is no " +
                         (std::is_integral_v<Number> ? "whole number" : "number"));
}

template <class Value, class Argument>
ControlProperty Property(const std::string& name,
                         const std::string& values,
                         Value (Hexmire::*get)() const,
                         void (Hexmire::*set)(Argument)) {
    return {.Name = name,
            .Values = values,
            .Get = [get](Hexmire& control) { return TextOf((control.*get)()); },
            .Read = [set](const std::string& text) -> std::function<void(Hexmire&)> {
                Value value{};
                ReadValue(text, value);
                return [set, value](Hexmire& control) { (control.*set)(value); };
            }};
}

ControlProperty Number(const std::string& name,
                       const std::string& values,
                       std::int32_t (Hexmire::*get)() const,
                       void (Hexmire::*set)(std::int32_t)) {
    return Property(name, values, get, set);
}

ControlProperty Fraction(const std::string& name,
                         const std::string& values,
                         float (Hexmire::*get)() const,
                         void (Hexmire::*set)(float)) {
    return Property(name, values, get, set);
}

ControlProperty Flag(const std::string& name,
                     bool (Hexmire::*get)() const,
                     void (Hexmire::*set)(bool)) {
    return Property(name, "True, False", get, set);
}

ControlProperty Text(const std::string& name,
                     const std::string& values,
                     std::string (Hexmire::*get)() const,
                     void (Hexmire::*set)(const std::string&)) {
    return Property(name, values, get, set);
}

/// A number that is written as one of some names; the number itself is taken as well.
ControlProperty Code(ControlProperty number, const Names& names) {
    number.Values.clear();
    for (const auto& [name, code] : names)
        number.Values += (number.Values.empty() ? "" : ", ") + name;
    number.Get = [get = number.Get, names](Hexmire& control) {
        std::string text = get(control);
        for (const auto& [name, code] : names) {
            if (std::to_string(code) == text) return name;
        }
        return text;
    };
    number.Read = [read = number.Read, names, values = number.Values](const std::string& text) {
        for (const auto& [name, code] : names) {
            if (name == text) return read(std::to_string(code));
        }
        if (text.find_first_not_of("0123456789") != std::string::npos || text.empty())
            throw BadCommand("'" + text + "' is none of " + values);
        return read(text);
    };
    return number;
}

std::vector<ControlProperty> Make() {
    using H = Hexmire;
    return {
        Number("BaudRate", "150, 300, 1200, 2400, 4800, 9600, 19200", &H::BaudRate, &H::BaudRate),
        Code(Number("ConnectionPortType", "", &H::ConnectionPortType, &H::ConnectionPortType),
             {{"rs232", PortTypeRS232},
              {"hsms", PortTypeHSMS},
              {"tcpip", PortTypeTCPIP},
              {"hsms-ss", PortTypeHSMS_SS}}),
        Number("ConnectionRetryLimit", "0..31", &H::ConnectionRetryLimit, &H::ConnectionRetryLimit),
        Number("DeviceID", "0..32767", &H::DeviceID, &H::DeviceID),
        Flag("DuplicateBlockCheck", &H::DuplicateBlockCheck, &H::DuplicateBlockCheck),
        Code(Number("HSMSConnectionType", "", &H::HSMSConnectionType, &H::HSMSConnectionType),
             {{"active", ConnectionModeActive},
              {"passive", ConnectionModePassive},
              {"alternating", ConnectionModeAlternating}}),
        Flag("InterleaveCheck", &H::InterleaveCheck, &H::InterleaveCheck),
        Text("LocalIPAddress", "address", &H::LocalIPAddress, &H::LocalIPAddress),
        Number("LocalIPPort", "1..65535", &H::LocalIPPort, &H::LocalIPPort),
        Flag("RecipeFileEnabled", &H::RecipeFileEnabled, &H::RecipeFileEnabled),
        Text("RecipeRecvPath", "folder", &H::RecipeRecvPath, &H::RecipeRecvPath),
        Text("RecipeSendPath", "folder", &H::RecipeSendPath, &H::RecipeSendPath),
        Text("RemoteIPAddress", "address", &H::RemoteIPAddress, &H::RemoteIPAddress),
        Number("RemoteIPPort", "1..65535", &H::RemoteIPPort, &H::RemoteIPPort),
        Text("SECSILogPath", "folder", &H::SECSILogPath, &H::SECSILogPath),
        Text("SECSLogFile", "file", &H::SECSLogFile, &H::SECSLogFile),
        Text("SerialPort", "device", &H::SerialPort, &H::SerialPort),
        Flag("SystemBytesCheck", &H::SystemBytesCheck, &H::SystemBytesCheck),
        Fraction("T1Timeout", "0.1..10 seconds", &H::T1Timeout, &H::T1Timeout),
        Fraction("T2Timeout", "0.2..25 seconds", &H::T2Timeout, &H::T2Timeout),
        Number("T3Timeout", "1..120 seconds", &H::T3Timeout, &H::T3Timeout),
        Number("T4Timeout", "1..120 seconds", &H::T4Timeout, &H::T4Timeout),
        Number("T5Timeout", "1..240 seconds", &H::T5Timeout, &H::T5Timeout),
        Number("T6Timeout", "1..240 seconds", &H::T6Timeout, &H::T6Timeout),
        Number("T7Timeout", "1..240 seconds", &H::T7Timeout, &H::T7Timeout),
        Number("T8Timeout", "1..120 seconds", &H::T8Timeout, &H::T8Timeout),
        Number("TimeOutRetry", "0..86400", &H::TimeOutRetry, &H::TimeOutRetry),
        Flag("TraceEnabled", &H::TraceEnabled, &H::TraceEnabled),
    };
}

}  // namespace

const std::vector<ControlProperty>& ControlProperties() {
    static const std::vector<ControlProperty> properties = Make();
    return properties;
}

const ControlProperty* FindControlProperty(std::string_view name) {
    for (const ControlProperty& property : ControlProperties()) {
        if (IsSameWord(property.Name, name)) return &property;
    }
    return nullptr;
}

}  // namespace hexmire::program
