#include "equipment/ParsedJson.h"

#include "Failure.h"
#include "equipment/Datum.h"

#include <cstddef>
#include <set>
#include <vector>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;

/// Looks on while JSON is read.
class JsonGuard {
public:
    explicit JsonGuard(const std::string& name) : name_(name) {}

    /// Throws UsageError for a member that stands twice in its object, and beyond any depth that a
    /// model has.
    void See(int depth, Json::parse_event_t event, const Json& parsed) {
        using Event = Json::parse_event_t;
        // Each list of a value is an object and an array.
        if (static_cast<std::size_t>(depth) > 2 * DeepestValue() + 16)
            throw UsageError(name_ + ": lists are nested more than " +
                             std::to_string(DeepestValue()) + " deep");
        if (event == Event::object_start) members_.emplace_back();
        if (event == Event::object_end) members_.pop_back();
        if (event != Event::key) return;
        const auto& member = parsed.get_ref<const std::string&>();
        if (!members_.back().insert(member).second)
            throw UsageError(name_ + ": member \"" + member + "\" stands twice in one object");
    }

private:
    const std::string& name_;
    std::vector<std::set<std::string>> members_;  // Of the objects that are open.
};

}  // namespace

nlohmann::ordered_json ParsedJson(std::string_view json, const std::string& name) {
    JsonGuard guard(name);
    const auto look = [&guard](int depth, Json::parse_event_t event, const Json& value) {
        guard.See(depth, event, value);
        return true;
    };
    try {
        return Json::parse(json, look);
    } catch (const nlohmann::json::exception& error) {
        // "[json.exception.parse_error.101] parse error at line 3, column 5: ..."
        std::string reason = error.what();
        if (const std::size_t end = reason.find("] "); end != std::string::npos)
            reason.erase(0, end + 2);
        throw UsageError(name + ": " + reason);
    }
}

}  // namespace hexmire::program
