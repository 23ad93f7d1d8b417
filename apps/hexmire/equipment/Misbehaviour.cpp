#include "equipment/Misbehaviour.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

namespace hexmire::program {

namespace {

std::optional<Misbehaviour::Kind> KindNamed(std::string_view word) {
    using enum Misbehaviour::Kind;
    static constexpr std::pair<std::string_view, Misbehaviour::Kind> kKinds[] = {
        {"late", Late},
        {"silent", Silent},
        {"wrong-function", WrongFunction},
        {"wrong-system-bytes", WrongSystemBytes},
        {"truncated", Truncated},
        {"duplicate", Duplicate},
        {"disconnect", Disconnect}};
    for (const auto& [name, kind] : kKinds) {
        if (name == word) return kind;
    }
    return std::nullopt;
}

std::uint32_t TimesIn(std::string_view word) {
    std::uint32_t times = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, times);
    if (error != std::errc() || stop != end || times == 0)
        throw BadCommand("'" + std::string(word) + "' is neither a number of times nor 'always'");
    return times;
}

}  // namespace

Misbehaviour ReadMisbehaviour(const std::vector<std::string_view>& words) {
    if (words.size() < 2) throw UsageOfCommand();
    const auto kind = KindNamed(words[1]);
    if (!kind)
        throw BadCommand("'" + std::string(words[1]) + "' is none of late SECONDS, silent, " +
                         "wrong-function, wrong-system-bytes, truncated, duplicate, disconnect");
    Misbehaviour result{
        .Primary = StreamAndFunctionIn(words[0]), .What = *kind, .Delay = {}, .Times = 1};
    if (result.Primary.Function % 2 == 0)
        throw BadCommand("'" + std::string(words[0]) +
                         "' is no primary: the functions of primaries are odd");
    std::size_t next = 2;
    if (*kind == Misbehaviour::Kind::Late) {
        if (words.size() < 3) throw UsageOfCommand();
        result.Delay = SecondsIn(words[next++]);
    }
    if (words.size() > next + 1) throw UsageOfCommand();
    if (words.size() == next) return result;
    if (words[next] == "always") {
        result.Times.reset();
    } else {
        result.Times = TimesIn(words[next]);
    }
    return result;
}

void Misbehaviours::Plan(const Misbehaviour& misbehaviour) {
    std::erase_if(planned_,
                  [&](const Misbehaviour& one) { return one.Primary == misbehaviour.Primary; });
    planned_.push_back(misbehaviour);
}

std::optional<Misbehaviour> Misbehaviours::Take(std::int32_t stream, std::int32_t function) {
    const auto found =
        std::ranges::find(planned_, StreamAndFunction{stream, function}, &Misbehaviour::Primary);
    if (found == planned_.end()) return std::nullopt;
    const Misbehaviour taken = *found;
    if (found->Times && --*found->Times == 0) planned_.erase(found);
    return taken;
}

}  // namespace hexmire::program
