#include "ScriptRunner.h"

#include <hexmire/hosting/Utf8.h>

#include "Failure.h"
#include "Template.h"

#include <string>

namespace hexmire::program {

void ScriptRunner::Run() {
    while (const auto line = lines_.Next([this] { return interrupt_.HasCome(); })) {
        try {
            const auto command = ParseCommand(*line);
            if (command && !Do(*command)) return;
            CheckInterrupt();
        } catch (const Failure& failure) {
            throw Failure("script line " + std::to_string(lines_.Number()) + ": " + failure.what());
        }
    }
    CheckInterrupt();
}

bool ScriptRunner::Do(const Command& command) {
    if (std::holds_alternative<QuitCommand>(command)) return false;
    if (const auto* connect = std::get_if<ConnectCommand>(&command)) Do(*connect);
    if (const auto* send = std::get_if<SendCommand>(&command)) Do(*send);
    if (const auto* expect = std::get_if<ExpectCommand>(&command)) Do(*expect);
    if (const auto* wait = std::get_if<WaitCommand>(&command))
        loop_.RunUntil([this] { return interrupt_.HasCome(); }, wait->Time);
    if (std::holds_alternative<DisconnectCommand>(command)) peer_.Close();
    return true;
}

void ScriptRunner::Do(const ConnectCommand& command) {
    if (peer_.Open([this] { return interrupt_.HasCome(); }, command.Timeout)) return;
    CheckInterrupt();
    const std::string& reason = peer_.LastError();
    throw Failure("no connection" + (reason.empty() ? "" : ": " + Utf8FromLatin1(reason)));
}

void ScriptRunner::Do(const SendCommand& command) {
    const SECSTransPtr trans = peer_.Control().NewSECSTransaction(Latin1FromUtf8(command.Name));
    if (trans != nullptr) PrepareSending(*trans);
    if (trans == nullptr || !peer_.Send(trans))
        throw Failure("cannot send " + command.Name + ": " + Utf8FromLatin1(peer_.LastError()));
}

void ScriptRunner::Do(const ExpectCommand& command) {
    bool taken = false;
    const auto decided = [&] {
        taken = taken || peer_.TakeReceived(command.Stream, command.Function);
        return taken || interrupt_.HasCome();
    };
    loop_.RunUntil(decided, command.Timeout);
    if (taken) return;
    CheckInterrupt();
    throw Failure(StreamFunction(command.Stream, command.Function) + " did not come");
}

void ScriptRunner::CheckInterrupt() const {
    if (interrupt_.HasCome()) throw Failure("interrupted");
}

}  // namespace hexmire::program
