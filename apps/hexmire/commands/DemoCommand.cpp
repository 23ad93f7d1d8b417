#include "commands/DemoCommand.h"

#include "CommandLine.h"
#include "DemoEquipment.h"
#include "DictionaryFile.h"
#include "Failure.h"
#include "FreePort.h"
#include "Interrupt.h"
#include "MessageLogFile.h"
#include "Peer.h"
#include "SmlPrinter.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kPatience = 10s;
constexpr std::int32_t kReplyTimeOut = 2012;

LinkOptions OptionsOf(Role role, const Endpoint& endpoint, const LinkOptions& given) {
    LinkOptions options;
    options.Trace = given.Trace;
    options.Pcap = given.Pcap;
    options.Recipes = given.Recipes;
    options.T5 = 1;
    options.SystemBytesCheck = true;
    if (role == Role::Host) {
        options.Remote = endpoint;
        options.Log = given.Log;
        options.NoLog = given.NoLog;
    } else {
        options.Local = endpoint;
        options.NoLog = true;  // One log tells of both sides.
    }
    return options;
}

std::string Milliseconds(Clock::duration duration) {
    char text[32] = "";
    std::snprintf(
        text, sizeof text, "%.2f ms", std::chrono::duration<double, std::milli>(duration).count());
    return text;
}

class Demo {
public:
    explicit Demo(const LinkOptions& given)
        : given_(given),
          hostSide_(loop_, hostOutput_, OptionsOf(Role::Host, endpoint_, given), Role::Host),
          equipmentSide_(loop_,
                         equipmentOutput_,
                         OptionsOf(Role::Equipment, endpoint_, given),
                         Role::Equipment),
          equipment_(equipmentSide_) {
        hostSide_.OnPrimary = [this](const SECSTransPtr& trans) { AcknowledgeEvent(trans); };
        hostSide_.OnSecondary = [this](const SECSTransPtr& trans) {
            latency_ = Clock::now() - sentAt_;
            answer_ = trans;
        };
        hostSide_.OnError = [this](std::int32_t code, const std::string&) { hostError_ = code; };
        hostSide_.OnDisconnect = [this](std::int32_t code) { hostEnd_ = code; };
    }

    void Run();

private:
    using Step = bool (Demo::*)();

    void Do(const std::string& name, Step step);
    bool Wait(const std::function<bool()>& condition);
    /// Sends a transaction of the host and waits for its answer.
    bool Exchange(const SECSTransPtr& trans);
    [[nodiscard]] SECSItemPtr AnswerBody() const { return PartOf(answer_->Secondary()->Root(), 1); }
    void AcknowledgeEvent(const SECSTransPtr& trans);
    void PrintSummary();

    bool Select();
    bool EstablishCommunications();
    bool AreYouThere();
    bool HostCommand();
    bool EquipmentEvent();
    bool ReplyTimeOut();
    bool Separate();

    struct Outcome {
        std::string Name;
        bool Happened = false;
        std::string Note;
    };

    const LinkOptions& given_;
    const Endpoint endpoint_{.Address = "127.0.0.1", .Port = FindFreePort()};
    EventLoop loop_;
    Interrupt interrupt_{loop_};
    SmlPrinter hostOutput_{std::cout, "  host      ", SmlPrinter::Detail::ReceivedSml};
    SmlPrinter equipmentOutput_{std::cout, "  equipment ", SmlPrinter::Detail::ReceivedSml};
    Peer hostSide_;
    Peer equipmentSide_;
    DemoEquipment equipment_;
    SECSTransPtr answer_;
    Clock::time_point sentAt_{};
    Clock::duration latency_{};
    std::int32_t hostError_ = 0;
    std::optional<std::int32_t> hostEnd_;
    std::string note_;
    std::vector<Outcome> outcomes_;
};

void Demo::Run() {
    if (!given_.Log.empty()) {
        if (const std::string problem = ProblemOfLog(given_.Log); !problem.empty())
            throw Failure(problem);
    }
    const std::string dictionary = FindDictionary(given_.Dictionary);
    hostSide_.LoadDictionary(dictionary);
    equipmentSide_.LoadDictionary(dictionary);
    std::cout << "A host and an equipment over HSMS-SS on " << EndpointText(endpoint_)
              << "\nDictionary: " << dictionary << " ("
              << hostSide_.Control().SECSDictionary()->TransCount() << " transactions)\n";
    Do("select", &Demo::Select);
    Do("establish communications, S1F13/S1F14", &Demo::EstablishCommunications);
    Do("are you there, S1F1/S1F2", &Demo::AreYouThere);
    Do("host command, S2F41/S2F42", &Demo::HostCommand);
    Do("equipment event and its acknowledge, S6F11/S6F12", &Demo::EquipmentEvent);
    Do("reply time-out T3 on purpose, S2F17 stays unanswered", &Demo::ReplyTimeOut);
    Do("separate", &Demo::Separate);
    PrintSummary();
}

void Demo::Do(const std::string& name, Step step) {
    std::cout << '\n' << outcomes_.size() + 1 << ". " << name << std::endl;
    note_.clear();
    answer_.reset();
    const bool happened = (this->*step)();
    outcomes_.push_back({.Name = name, .Happened = happened, .Note = note_});
    if (interrupt_.HasCome()) throw Failure("interrupted");
    if (!happened)
        throw Failure("step " + std::to_string(outcomes_.size()) + ", " + name +
                      ", did not happen as it should");
}

bool Demo::Wait(const std::function<bool()>& condition) {
    loop_.RunUntil([&] { return condition() || interrupt_.HasCome(); }, kPatience);
    return condition();
}

bool Demo::Exchange(const SECSTransPtr& trans) {
    if (trans == nullptr) return false;
    sentAt_ = Clock::now();
    if (!hostSide_.Send(trans) || !Wait([this] { return answer_ != nullptr; })) return false;
    note_ = "reply after " + Milliseconds(latency_);
    std::cout << "  " << note_ << std::endl;
    return true;
}

bool Demo::Select() {
    equipmentSide_.Control().OpenPort();
    hostSide_.Control().OpenPort();
    return Wait([this] { return hostSide_.IsConnected() && equipmentSide_.IsConnected(); });
}

bool Demo::EstablishCommunications() {
    const SECSTransPtr trans = hostSide_.Control().NewSECSTransaction("S1F13");
    if (trans == nullptr) return false;
    const SECSItemPtr body = PartOf(trans->Primary()->Root(), 1);
    for (const SECSItemPtr& item : *body)
        item->Delete();  // A host sends an empty list.
    return Exchange(trans) && NumberIn(PartOf(AnswerBody(), 1)) == 0;
}

bool Demo::AreYouThere() {
    if (!Exchange(hostSide_.Control().NewSECSTransaction("S1F1"))) return false;
    return PartOf(AnswerBody(), 1)->Value() == Variant(DemoEquipment::kModel);
}

bool Demo::HostCommand() {
    const SECSTransPtr trans = hostSide_.Control().NewSECSTransaction("S2F41");
    if (trans == nullptr) return false;
    const SECSItemPtr body = PartOf(trans->Primary()->Root(), 1);
    PartOf(body, "RCMD")->Value("START");
    const SECSItemPtr parameter = PartOf(PartOf(body, 2), 1);
    PartOf(parameter, "CPNAME")->Value("PPID");
    const SECSItemPtr value = PartOf(parameter, "CPVAL");
    value->Format(FormatAscii);
    value->Value("RECIPE-7");
    return Exchange(trans) && NumberIn(PartOf(AnswerBody(), 1)) == 0;
}

bool Demo::EquipmentEvent() {
    return equipment_.ReportEvent() &&
           Wait([this] { return equipment_.Acknowledge().has_value(); }) &&
           equipment_.Acknowledge() == 0;
}

void Demo::AcknowledgeEvent(const SECSTransPtr& trans) {
    if (trans->Name() != "S6F11") return;
    PartOf(trans->Secondary()->Root(), 1)->Value(std::uint8_t{0});
    hostSide_.Reply(trans);
}

bool Demo::ReplyTimeOut() {
    constexpr std::int32_t kShortest = 1;
    hostSide_.Control().T3Timeout(kShortest);
    const SECSTransPtr trans =
        hostSide_.Control().NewSECSTransaction(DemoEquipment::kUnansweredRequest);
    hostError_ = 0;
    sentAt_ = Clock::now();
    if (trans == nullptr || !hostSide_.Send(trans)) return false;
    if (!Wait([this] { return hostError_ != 0; })) return false;
    note_ =
        "error " + std::to_string(hostError_) + " after " + Milliseconds(Clock::now() - sentAt_);
    return hostError_ == kReplyTimeOut && answer_ == nullptr;
}

bool Demo::Separate() {
    hostEnd_.reset();
    hostSide_.Control().ClosePort();
    const bool ended =
        Wait([this] { return hostEnd_.has_value() && !equipmentSide_.IsConnected(); });
    equipmentSide_.Close();
    return ended && hostEnd_ == 0;
}

void Demo::PrintSummary() {
    std::cout << "\nSummary\n";
    for (const Outcome& outcome : outcomes_) {
        std::cout << "  " << (outcome.Happened ? "happened  " : "missed    ") << outcome.Name;
        if (!outcome.Note.empty()) std::cout << " (" << outcome.Note << ')';
        std::cout << '\n';
    }
    const std::string log = DailyFile(hostSide_.Control().SECSLogFile());
    std::error_code error;
    std::cout << "Message log: ";
    if (given_.NoLog) {
        std::cout << "off\n";
    } else if (std::filesystem::exists(log, error)) {
        std::cout << log << '\n';
    } else {
        std::cout << "could not be written to " << log << '\n';
    }
    std::cout << std::flush;
}

}  // namespace

void AddDemoOptions(Command command, LinkOptions& options) { AddFileOptions(command, options); }

void RunDemo(const LinkOptions& options) { Demo(options).Run(); }

}  // namespace hexmire::program
