#pragma once

#include <hexmire/hosting/IRecordFiles.h>

namespace hexmire {

/// The real files. Each is opened for one operation and closed again, so that it may be read, moved
/// or deleted at any time. Nothing blocks on a file that is no file.
class RecordFiles final : public IRecordFiles {
public:
    std::string Append(const std::string& path,
                       std::string_view start,
                       std::string_view bytes) override;
    std::string Store(const std::string& folder,
                      const std::string& name,
                      std::string_view bytes) override;
};

}  // namespace hexmire
