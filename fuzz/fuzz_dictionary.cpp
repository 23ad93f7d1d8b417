// A dictionary file: any bytes load or are refused, and every template that was loaded can be
// copied and sent.
#include <hexmire/control/Hexmire.h>
#include <hexmire/hosting/XmlParser.h>

#include "../tests/fakes/TestHost.h"
#include "Require.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace hexmire;

/// A document whose file is the fuzzer's input.
class InputDocument final : public IXMLDocument {
public:
    explicit InputDocument(std::string bytes) : bytes_(std::move(bytes)) {}
    bool Load(const std::string&) override {
        parsed_ = ParseXml(bytes_);
        return parsed_.Root != nullptr;
    }
    [[nodiscard]] std::int32_t ParseErrorCode() const override { return parsed_.ErrorCode; }
    [[nodiscard]] std::shared_ptr<const IXMLNode> DocumentElement() const override {
        return parsed_.Root;
    }

private:
    std::string bytes_;
    ParsedXml parsed_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fakes::TestHost fakes(false);
    Platform platform = fakes.MakePlatform(false);
    platform.NewXMLDocument = [&] {
        return std::make_unique<InputDocument>(std::string(data, data + size));
    };
    Hexmire control(platform);
    control.LoadXMLDictionary();

    const std::int32_t count = control.SECSDictionary()->TransCount();
    for (std::int32_t index = 1; index <= count; ++index) {
        const SECSTransPtr trans = control.NewSECSTransaction(index);
        fuzz::Require(trans != nullptr, "every template can be copied");
        trans->ReplyExpected(false);
        trans->Send();
    }
    fuzz::Require(fakes.Driver.Sent.size() == static_cast<std::size_t>(count),
                  "every template can be sent");
    return 0;
}
