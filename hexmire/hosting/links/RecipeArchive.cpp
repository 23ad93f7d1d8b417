#include <hexmire/driver/SafeFileName.h>
#include <hexmire/driver/recipe/Recipe.h>
#include <hexmire/hosting/links/RecipeArchive.h>
#include <hexmire/hosting/links/RecordPath.h>

#include <string_view>
#include <utility>

namespace hexmire::link {

namespace {

constexpr std::uint8_t kStreamBits = 0x7F;

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What a recipe that waits takes, however short it is.
std::size_t SizeOf(const std::string& folder,
                   const std::string& name,
                   std::span<const std::uint8_t> body) {
    constexpr std::size_t kBesides = 512;
    return body.size() + 2 * (folder.size() + name.size()) + kBesides;
}

}  // namespace

RecipeArchive::RecipeArchive(FileWorker& worker,
                             RecordSite site,
                             LinkStatistics& statistics,
                             Failed failed)
    : worker_(worker),
      site_(std::move(site)),
      statistics_(statistics),
      failed_(std::move(failed)) {}

void RecipeArchive::Configure(const LinkSettings& settings) {
    isOn_ = settings.RecipeFileEnabled;
    sendFolder_ = settings.RecipeSendPath;
    receiveFolder_ = settings.RecipeRecvPath;
}

void RecipeArchive::Take(TraceDirection direction,
                         std::span<const std::uint8_t, 10> header,
                         std::span<const std::uint8_t> body) {
    const auto stream = static_cast<std::uint8_t>(header[2] & kStreamBits);
    const std::uint8_t function = header[3];
    if (!isOn_ || !CarriesRecipe(stream, function, body)) return;
    const auto recipe = FindRecipe(stream, function, body);
    if (!recipe) {
        return Fail("S7F" + std::to_string(function) + " is no list of PPID and PPBODY");
    }
    const bool isSent = direction == TraceDirection::Sent;
    const std::string& folder = isSent ? sendFolder_ : receiveFolder_;
    std::string name = SafeFileName(TextOf(recipe->Id));
    if (folder.empty()) {
        return Fail(name + ": no folder is set in Recipe" + (isSent ? "Send" : "Recv") + "Path");
    }
    if (waiting_ + SizeOf(folder, name, recipe->Body) > kMostWaiting) {
        return Fail(PathIn(folder, name) + ": too much waits for the disk");
    }
    Store(folder, std::move(name), recipe->Body);
}

void RecipeArchive::Store(const std::string& folder,
                          std::string name,
                          std::span<const std::uint8_t> body) {
    const std::string path = PathIn(folder, name);
    const std::size_t size = SizeOf(folder, name, body);
    waiting_ += size;
    try {
        worker_.Post(
            [files = site_.Files,
             folder,
             name = std::move(name),
             bytes = std::string(TextOf(body))] { return files->Store(folder, name, bytes); },
            [this, path, size](const std::string& failure) { OnDone(failure, path, size); });
    } catch (...) {
        OnDone("no memory or no thread to write it", path, size);
    }
}

void RecipeArchive::OnDone(const std::string& failure, const std::string& path, std::size_t size) {
    waiting_ -= size;
    if (failure.empty()) {
        ++statistics_.RecipesStored;
    } else {
        Fail(path + ": " + failure);
    }
}

void RecipeArchive::Fail(const std::string& what) {
    ++statistics_.RecipesNotStored;
    failed_(what);
}

}  // namespace hexmire::link
