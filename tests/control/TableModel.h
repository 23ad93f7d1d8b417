#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// What a host does and what a driver tells, as values; and the smallest model of the table of
/// transactions in use that answers them.
namespace hexmire::fakes {

enum class Kind {
    Send,             ///< a new S<A>F<B>; Flag: a reply is expected
    SendFaulting,     ///< the same, but the driver faults
    SendAgain,        ///< transaction A once more
    Delete,           ///< transaction A
    MessageSent,      ///< S<A>F<B> under system bytes C
    BlockReceived,    ///< the same
    Receive,          ///< the same
    Tick,             ///< Flag: the clock shows another second
    ReplyTime,        ///< T3Timeout A
    SystemBytesCheck  ///< Flag
};

struct Action {
    Kind What = Kind::Tick;
    std::int32_t A = 0;
    std::int32_t B = 0;
    std::int32_t C = 0;
    bool Flag = false;
};

/// What the handlers do in one step: the n-th event raised runs the n-th action, when there is one.
class Plan {
public:
    explicit Plan(std::vector<Action> actions = {}) : actions_(std::move(actions)) {}
    /// The action of the event that is being raised; none most of the time.
    const Action* Next() {
        const std::size_t event = events_++;
        if (event >= actions_.size() || actions_[event].A < 0) return nullptr;
        return &actions_[event];
    }

private:
    std::vector<Action> actions_;
    std::size_t events_ = 0;
};

/// A transaction as the model sees it; waiting ones stand in the table in order.
struct ModelTrans {
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    std::int32_t SystemBytes = 0;
    std::int32_t Timer = 0;
    std::int32_t Counter = 0;
    bool ReplyExpected = false;
    bool Running = false;
    bool InProgress = false;
};

class TableModel {
public:
    void Run(const Action& action, Plan plan) {
        plan_ = std::move(plan);
        Raised.clear();
        Apply(action);
    }

    std::vector<ModelTrans> All;
    std::vector<std::size_t> Table;
    std::vector<std::string> Raised;

private:
    void Apply(const Action& action) {
        switch (action.What) {
            case Kind::Send:
            case Kind::SendFaulting:
                All.push_back({action.A, action.B, 0, replyTime_, 0, action.Flag});
                Send(All.size() - 1, action.What == Kind::SendFaulting);
                break;
            case Kind::SendAgain:
                if (Known(action.A)) Send(static_cast<std::size_t>(action.A), false);
                break;
            case Kind::Delete:
                if (Known(action.A)) Delete(static_cast<std::size_t>(action.A));
                break;
            case Kind::MessageSent:
                if (action.B % 2 == 1) Mark(action, true);
                break;
            case Kind::BlockReceived:
                if (action.B % 2 == 0) Mark(action, false);
                break;
            case Kind::Receive:
                Receive(action);
                break;
            case Kind::Tick:
                if (action.Flag) Tick();
                break;
            case Kind::ReplyTime:
                replyTime_ = action.A;
                break;
            case Kind::SystemBytesCheck:
                check_ = action.Flag;
                break;
        }
    }

    [[nodiscard]] bool Known(std::int32_t index) const {
        return index >= 0 && static_cast<std::size_t>(index) < All.size();
    }
    [[nodiscard]] bool Waits(std::size_t index) const {
        return std::find(Table.begin(), Table.end(), index) != Table.end();
    }
    static std::string Name(std::int32_t stream, std::int32_t function) {
        return "S" + std::to_string(stream) + "F" + std::to_string(function);
    }

    void Raise(const std::string& text) {
        Raised.push_back(text);
        if (const Action* nested = plan_.Next(); nested != nullptr) Apply(Action(*nested));
    }
    void Fail(std::int32_t code, const std::string& text) {
        Raise("Error(" + std::to_string(code) + "," + text + ",0)");
    }

    void Send(std::size_t index, bool faults) {
        if (Waits(index)) {
            Fail(2009, "(SECSTrans-Send) You must call NewSECSTrans to use send method.");
            return;
        }
        All[index].SystemBytes = ++counter_;
        if (faults) {
            Fail(-2147467259, "(SECSTrans-Send) driver failed");
        } else if (All[index].ReplyExpected) {
            Table.push_back(index);
            All[index].InProgress = true;
        }
    }

    void Delete(std::size_t index) {
        const auto found = std::find(Table.begin(), Table.end(), index);
        if (found == Table.end()) {
            Fail(1079, "(SECSTrans-Delete) The Root item cannot be deleted.");
        } else {
            Table.erase(found);
        }
    }

    /// Start of T3 looks at the primaries, its stop at the secondaries.
    void Mark(const Action& action, bool start) {
        for (const std::size_t index : Table) {
            ModelTrans& trans = All[index];
            const std::int32_t function = start ? trans.Function : trans.Function + 1;
            if (trans.SystemBytes == action.C && trans.Stream == action.A && function == action.B) {
                trans.Running = start;
                return;
            }
        }
    }

    void Receive(const Action& action) {
        const std::string name = Name(action.A, action.B);
        const std::string prefix =
            "(Hexmire-moSECSIService_SecsMsgReceive) This SECSMessage "
            "received is not ";
        if (action.B % 2 == 1) {
            Raise("ReceivedPrimary(" + name + ",0,)");
            Fail(2011, prefix + "contained in the SECSDictionary. - " + name);
            return;
        }
        const auto found = std::find_if(Table.begin(), Table.end(), [&](std::size_t index) {
            const ModelTrans& trans = All[index];
            return trans.Stream == action.A && trans.Function + 1 == action.B &&
                   (!check_ || trans.SystemBytes == action.C);
        });
        const bool matched = found != Table.end();
        const std::size_t index = matched ? *found : 0;
        Raise("ReceivedSecondary(" + name + ",0,)");
        if (!matched) {
            Fail(2013, prefix + "belong to any primary SECSMessage. - " + name);
            return;
        }
        All[index].InProgress = false;
        Delete(index);
    }

    void Tick() {
        for (const std::size_t index : std::vector<std::size_t>(Table)) {
            if (!Waits(index)) continue;
            if (All[index].Running) {
                if (--All[index].Timer > 0) continue;
                Fail(2012,
                     "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-" +
                         std::to_string(All[index].SystemBytes) + "] " +
                         Name(All[index].Stream, All[index].Function));
            } else {
                if (++All[index].Counter < 4 * replyTime_) continue;
                Fail(2015,
                     "(SECSTrans-Let T3Counter) SECSTrans in use cleared. For n" +
                         std::to_string(index));
            }
            Delete(index);
        }
    }

    Plan plan_;
    std::int32_t counter_ = 0;
    std::int32_t replyTime_ = 45;
    bool check_ = false;
};

}  // namespace hexmire::fakes
