#pragma once

#include "Receiving.h"

#include <functional>
#include <string>
#include <utility>

namespace hexmire::fakes {

/// Log lines, events and calls of SendMessage in the one order in which they came.
class Traced : public Receiving {
public:
    Traced() {
        HexmireEvents& events = Control().Events();
        events.Error = [this, record = events.Error](
                           std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            Note(Raised.back());
        };
        for (auto* received : {&events.ReceivedPrimary, &events.ReceivedSecondary}) {
            *received = [this, record = *received](
                            const SECSTransPtr& trans, std::int32_t code, const std::string& text) {
                record(trans, code, text);
                Note(Raised.back());
                if (OnReceived) OnReceived(trans);
            };
        }
        Driver.OnCall = [this](const std::string& call) {
            if (call == "SendMessage") Note(Driver.Calls.back());
        };
    }
    /// What came since the last call.
    Lines Trace() {
        TakeLines();
        return std::exchange(trace_, Lines());
    }
    /// A transaction of S1F3 with a body of one U1.
    SECSTransPtr Request() {
        SECSTransPtr trans = Control().NewSECSTransaction();
        trans->Name("S1F3");
        trans->Primary()->Stream(1);
        trans->Primary()->Func(3);
        trans->Secondary()->Stream(1);
        trans->Secondary()->Func(4);
        AddItem(trans->Primary()->Root(), FormatU1, 7);
        return trans;
    }
    std::function<void(const SECSTransPtr&)> OnReceived;

private:
    void TakeLines() {
        for (const std::string& line : NewLines())
            trace_.push_back(line);
    }
    void Note(const std::string& what) {
        TakeLines();
        trace_.push_back(what);
    }
    Lines trace_;
};

}  // namespace hexmire::fakes
