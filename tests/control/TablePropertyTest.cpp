#include <hexmire/support/ProcessState.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include "../fakes/TestHost.h"
#include "TableModel.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using namespace fakes;

/// The same actions on a control.
class RealTable {
public:
    explicit RealTable(bool messageLog) : host_(messageLog) {
        detail::State().SystemBytesCounter = 0;
        HexmireEvents& events = host_.Control().Events();
        events.Error = [this, record = events.Error](
                           std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            Handle();
        };
        events.ReceivedPrimary = [this, record = events.ReceivedPrimary](const SECSTransPtr& trans,
                                                                         std::int32_t code,
                                                                         const std::string& text) {
            record(trans, code, text);
            Handle();
        };
        events.ReceivedSecondary =
            [this, record = events.ReceivedSecondary](
                const SECSTransPtr& trans, std::int32_t code, const std::string& text) {
                record(trans, code, text);
                Handle();
            };
    }

    void Run(const Action& action, Plan plan) {
        plan_ = std::move(plan);
        host_.Raised.clear();
        host_.Driver.Sent.clear();
        host_.Primaries.clear();
        host_.Secondaries.clear();
        Apply(action);
    }
    [[nodiscard]] const std::vector<std::string>& Raised() const { return host_.Raised; }
    [[nodiscard]] const std::vector<SECSTransPtr>& All() const { return all_; }
    [[nodiscard]] SECSDictionaryPtr Table() { return host_.Table(); }

private:
    void Handle() {
        if (const Action* nested = plan_.Next(); nested != nullptr) Apply(Action(*nested));
    }
    [[nodiscard]] SECSTransPtr Known(std::int32_t index) const {
        return static_cast<std::size_t>(index) < all_.size() ? all_[static_cast<std::size_t>(index)]
                                                             : nullptr;
    }
    void Send(const Action& action) {
        const SECSTransPtr trans = host_.Control().NewSECSTransaction();
        trans->Name("n" + std::to_string(all_.size()));
        trans->ReplyExpected(action.Flag);
        trans->Primary()->Stream(action.A);
        trans->Primary()->Func(action.B);
        trans->Secondary()->Stream(action.A);
        trans->Secondary()->Func(action.B + 1);
        all_.push_back(trans);
        host_.Driver.FailingCall = action.What == Kind::SendFaulting ? "SendMessage" : "";
        host_.Driver.OnCall = nullptr;
        trans->Send();
        host_.Driver.FailingCall = "";
    }
    void Apply(const Action& action) {
        const auto header =
            Header(0, action.B % 2 == 1, action.A, action.B, static_cast<std::uint32_t>(action.C));
        // A handler inside a faulting Send must find a driver that works again.
        host_.Driver.FailingCall = "";
        switch (action.What) {
            case Kind::Send:
            case Kind::SendFaulting:
                return Send(action);
            case Kind::SendAgain:
                if (const SECSTransPtr trans = Known(action.A)) trans->Send();
                return;
            case Kind::Delete:
                if (const SECSTransPtr trans = Known(action.A)) trans->Delete();
                return;
            case Kind::MessageSent:
                return host_.MessageSent(header);
            case Kind::BlockReceived:
                return host_.BlockReceived(header);
            case Kind::Receive:
                return host_.MessageReceived(header, {});
            case Kind::Tick:
                if (action.Flag) host_.Clock.Advance(std::chrono::seconds(1));
                return host_.Container.Tick();
            case Kind::ReplyTime:
                return host_.Control().T3Timeout(action.A);
            case Kind::SystemBytesCheck:
                return host_.Control().SystemBytesCheck(action.Flag);
        }
    }

    TestHost host_;
    std::vector<SECSTransPtr> all_;
    Plan plan_;
};

/// Actions that meet each other often: two streams, few system bytes, recent transactions.
class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed) {}

    [[nodiscard]] std::int32_t Below(std::int32_t bound) {
        return static_cast<std::int32_t>(random_() % static_cast<unsigned>(bound));
    }
    Action Throw(const TableModel& model, bool nested) {
        const auto count = static_cast<std::int32_t>(model.All.size());
        const std::int32_t recent = std::max(0, count - 1 - Below(12));
        const std::int32_t stream = 1 + Below(2);
        const std::int32_t function = 1 + 2 * Below(2);
        const std::int32_t systemBytes =
            count == 0 ? 0 : model.All[static_cast<std::size_t>(recent)].SystemBytes;
        switch (Below(nested ? 10 : 16)) {
            case 0:
            case 1:
            case 2:
                return {Kind::Send, stream, function, 0, Below(5) != 0};
            case 3:
                return {Kind::SendFaulting, stream, function, 0, true};
            case 4:
                return {Kind::SendAgain, recent};
            case 5:
                return {Kind::Delete, recent};
            case 6:
                return {Kind::MessageSent, stream, function + Below(2), systemBytes};
            case 7:
                return {Kind::BlockReceived, stream, function + Below(2), systemBytes};
            case 8:
                return {Kind::Receive, stream, function + (Below(4) == 0 ? 0 : 1), systemBytes};
            case 9:
                return {Kind::ReplyTime, 1 + Below(4)};
            case 10:
                return {Kind::SystemBytesCheck, 0, 0, 0, Below(2) == 0};
            case 11:
            case 12:
                return {Kind::MessageSent, stream, function, systemBytes};
            default:
                return {Kind::Tick, 0, 0, 0, Below(5) != 0};
        }
    }
    /// Most steps have handlers that do nothing; some do something at each of the first events.
    std::vector<Action> ThrowPlan(const TableModel& model) {
        std::vector<Action> actions;
        if (Below(3) != 0) return actions;
        for (std::int32_t left = Below(5); left > 0; --left) {
            actions.push_back(Below(2) == 0 ? Action{Kind::Tick, -1} : Throw(model, true));
        }
        return actions;
    }

private:
    std::mt19937 random_;
};

std::string Describe(const Action& action) {
    return "kind " + std::to_string(static_cast<int>(action.What)) + " " +
           std::to_string(action.A) + " " + std::to_string(action.B) + " " +
           std::to_string(action.C) + (action.Flag ? " true" : " false");
}

/// The table in order, every field that the model knows.
std::vector<std::string> Contents(const TableModel& model) {
    std::vector<std::string> lines;
    std::int32_t position = 0;
    for (const std::size_t index : model.Table) {
        const ModelTrans& trans = model.All[index];
        lines.push_back("n" + std::to_string(index) + " at " + std::to_string(++position) + " sb " +
                        std::to_string(trans.SystemBytes) + " timer " +
                        std::to_string(trans.Timer) + " counter " + std::to_string(trans.Counter) +
                        (trans.Running ? " running" : "") + (trans.InProgress ? " busy" : ""));
    }
    return lines;
}
std::vector<std::string> Contents(RealTable& real) {
    std::vector<std::string> lines;
    for (const SECSTransPtr& entry : *real.Table()) {
        lines.push_back(entry->Name() + " at " + std::to_string(entry->Index()) + " sb " +
                        std::to_string(entry->SystemBytes()) + " timer " +
                        std::to_string(Access::T3Timer(*entry)) + " counter " +
                        std::to_string(Access::T3Counter(*entry)) +
                        (Access::T3Start(*entry) ? " running" : "") +
                        (entry->InProgress() ? " busy" : ""));
    }
    return lines;
}

class TableProperty : public ::testing::TestWithParam<unsigned> {};

TEST_P(TableProperty, AgreesWithTheModelStepByStep) {
    constexpr int kSteps = 2500;
    Dice dice(GetParam());
    TableModel model;
    RealTable real(GetParam() % 4 == 0);
    std::size_t raised = 0;
    for (int step = 0; step < kSteps; ++step) {
        const Action action = dice.Throw(model, false);
        const std::vector<Action> handlers = dice.ThrowPlan(model);
        model.Run(action, Plan(handlers));
        real.Run(action, Plan(handlers));
        ASSERT_EQ(real.Raised(), model.Raised) << "step " << step << ": " << Describe(action);
        ASSERT_EQ(Contents(real), Contents(model)) << "step " << step << ": " << Describe(action);
        raised += model.Raised.size();
    }
    ASSERT_EQ(real.All().size(), model.All.size());
    for (std::size_t index = 0; index < model.All.size(); ++index) {
        EXPECT_EQ(real.All()[index]->InProgress(), model.All[index].InProgress) << index;
        EXPECT_EQ(real.All()[index]->SystemBytes(), model.All[index].SystemBytes) << index;
    }
    EXPECT_GT(raised, 500U);
    EXPECT_GT(model.All.size(), 300U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TableProperty, ::testing::Range(1U, 13U));

}  // namespace
}  // namespace hexmire
