#pragma once

#include "FreePort.h"
#include "Peer.h"
#include "equipment/EquipmentRole.h"
#include "equipment/ModelFile.h"
#include "equipment/OperatorCommands.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::program {

/// What a peer shows: "connect", "S1F2", "error 2012"; apart from that, what it has sent.
class Shown final : public EventOutput {
public:
    void Connect() override { Lines.emplace_back("connect"); }
    void Disconnect(std::int32_t code, const std::string&) override {
        Lines.push_back("disconnect " + std::to_string(code));
    }
    void Error(std::int32_t code, const std::string&, std::int32_t) override {
        Lines.push_back("error " + std::to_string(code));
    }
    void Message(const MessageRecord& message) override {
        const bool sent = message.Kind == MessageKind::Sent;
        (sent ? Sent : Lines).push_back(StreamFunction(message.Stream, message.Function));
        if (!sent) Last = message;
    }

    [[nodiscard]] bool IsGood() const override { return true; }

    std::vector<std::string> Lines;
    std::vector<std::string> Sent;
    MessageRecord Last;
};

/// A host and a simulated equipment on a loopback link.
class EquipmentOnALink : public testing::Test {
protected:
    static LinkOptions Options(Role role, const Endpoint& at) {
        LinkOptions options;
        (role == Role::Host ? options.Remote : options.Local) = at;
        options.NoLog = true;
        options.T3 = 1;
        options.T5 = 1;
        return options;
    }

    /// Connects the two.
    void Start();
    void TearDown() override {
        hostSide_.Close();
        equipmentSide_.Close();
    }

    void Send(std::int32_t stream,
              std::int32_t function,
              const std::optional<Datum>& body = std::nullopt) {
        const SECSTransPtr trans = hostSide_.Control().NewSECSTransaction();
        trans->Name(StreamFunction(stream, function));
        trans->Primary()->Stream(stream);
        trans->Primary()->Func(function);
        trans->Secondary()->Stream(stream);
        trans->Secondary()->Func(function + 1);
        SetBody(*trans->Primary(), body);
        hostSide_.Send(trans);
    }
    void Plan(const char* text) { role_.Planned().Plan(ReadMisbehaviour(SplitWords(text))); }

    /// Does a command of the operator; what it fails with, "" when it does not.
    std::string Do(const std::string& command) {
        ScriptCommands commands;
        AddOperatorCommands(commands, role_);
        ScriptContext context{.Loop = loop_,
                              .Side = equipmentSide_,
                              .Commands = commands,
                              .Out = std::cout,
                              .GivenUp = [] { return false; }};
        try {
            commands.Read(command)(context);
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

    /// What the host sees until it has seen this.
    std::vector<std::string> SeenUntil(const std::string& last) {
        const auto seen = [&] { return std::ranges::count(host_.Lines, last) > 0; };
        EXPECT_TRUE(loop_.RunUntil(seen, std::chrono::seconds(20))) << last;
        return std::exchange(host_.Lines, {});
    }

    EventLoop loop_;
    Shown host_;
    Shown equipment_;
    const Endpoint endpoint_{"127.0.0.1", FindFreePort()};
    EquipmentRole::Options options_{.Model = BuiltInModel()};
    TruncateNext cutNext_ = std::make_shared<bool>(false);  ///< of the host's messages
    Peer hostSide_{
        loop_, host_, Options(Role::Host, endpoint_), Role::Host, [this](Platform& platform) {
            AddTruncation(platform, cutNext_);
        }};
    Peer equipmentSide_{loop_,
                        equipment_,
                        Options(Role::Equipment, endpoint_),
                        Role::Equipment,
                        [this](Platform& platform) { AddTruncation(platform, options_.Truncate); }};
    EquipmentRole role_{loop_, equipmentSide_, options_};
};

}  // namespace hexmire::program
