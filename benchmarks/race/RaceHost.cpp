#include "RaceHost.h"

#include <hexmire/sml.h>

#include "../Workloads.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace hexmire::bench {

namespace {

/// Puts a copy of what is below one item below another.
void CopyTree(const SECSItemPtr& from, const SECSItemPtr& to) {
    for (const SECSItemPtr& child : *from) {
        const SECSItemPtr copy = to->AddNew(to->ItemCount() + 1);
        copy->Format(child->Format());
        if (child->Format() == FormatList) {
            CopyTree(child, copy);
        } else {
            copy->Value(child->Value());
        }
    }
}

}  // namespace

RaceMessage RaceMessageNamed(std::string_view what) {
    if (what == "a") return {"S1F1", 1, 1, ""};
    if (what == "b") return {"S2F101", 2, 101, "w1a"};
    if (what == "w3a" || what == "w3b") return {"S7F3", 7, 3, std::string(what)};
    throw std::invalid_argument("no such race: " + std::string(what));
}

RaceHost::RaceHost(EventLoop& loop, const Options& options)
    : control_(loop.Platform({.MessageLog = !options.LogFile.empty()})),
      name_(options.Message.Name),
      failure_(options.Failure) {
    control_.ConnectionPortType(PortTypeHSMS_SS);
    control_.RemoteIPAddress("127.0.0.1");
    control_.RemoteIPPort(options.Port);
    control_.SystemBytesCheck(true);
    if (!options.LogFile.empty()) control_.SECSLogFile(options.LogFile);
    AddTemplate(options);
    control_.Events().Connect = [this] { connected_ = true; };
    control_.Events().Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
        Fail("error " + std::to_string(code) + ": " + text);
    };
    control_.Events().Disconnect = [this](std::int32_t code, const std::string& text) {
        if (code != 0) Fail("disconnected: " + text);
    };
    control_.Events().ReceivedSecondary = [this](const SECSTransPtr& trans, auto&&...) {
        TakeReply(trans);
    };
    control_.OpenPort();
}

void RaceHost::AddTemplate(const Options& options) {
    const SECSTransPtr trans = control_.SECSDictionary()->AddNewTrans(1);
    trans->Name(options.Message.Name);
    for (const auto& [message, function] :
         {std::pair{trans->Primary(), options.Message.Function},
          std::pair{trans->Secondary(), options.Message.Function + 1}}) {
        message->Stream(options.Message.Stream);
        message->Func(function);
    }
    if (options.Message.BodyFile.empty()) return;
    const auto bytes = ReadBody(options.DataDirectory, options.Message.BodyFile);
    CopyTree(DecodeBody(bytes).Message->Root(), trans->Primary()->Root());
}

void RaceHost::Fail(const std::string& reason) {
    if (failure_.empty()) failure_ = reason;
}

void RaceHost::Send() {
    const auto begin = Clock::now();
    const SECSTransPtr trans = control_.NewSECSTransaction(name_);
    trans->Send();
    begins_.at(static_cast<std::size_t>(trans->SystemBytes()) % kMostOpen) = begin;
}

void RaceHost::TakeReply(const SECSTransPtr& trans) {
    ReadTree(trans->Secondary()->Root());
    if (OnReply) OnReply(begins_.at(static_cast<std::size_t>(trans->SystemBytes()) % kMostOpen));
}

}  // namespace hexmire::bench
