#pragma once

#include <hexmire/support/ProcessState.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/TestHost.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::fakes {

using Lines = std::vector<std::string>;
using Errors = std::vector<ErrorEvent>;

/// A host that receives: templates S1F1 and S6F11, system bytes from 1, log lines since the last
/// look.
class Receiving : public TestHost {
public:
    explicit Receiving(bool messageLog = true) : TestHost(messageLog) {
        hexmire::detail::State().SystemBytesCounter = 0;
        AddTemplate("S1F1", 1, 1);
        AddTemplate("S6F11", 6, 11);
    }

    void ReceivePrimary(std::int32_t stream,
                        std::int32_t function,
                        std::uint32_t systemBytes = 9,
                        const std::string& body = "") {
        MessageReceived(Header(0, true, stream, function, systemBytes), Bytes(body));
    }
    void ReceiveReply(std::int32_t stream,
                      std::int32_t function,
                      std::uint32_t systemBytes,
                      const std::string& body = "") {
        MessageReceived(Header(0, false, stream, function, systemBytes), Bytes(body));
    }
    /// Sends a primary whose reply is awaited.
    SECSTransPtr Send(std::int32_t stream = 1, std::int32_t function = 1) {
        SECSTransPtr trans = Control().NewSECSTransaction();
        trans->Primary()->Stream(stream);
        trans->Primary()->Func(function);
        trans->Secondary()->Stream(stream);
        trans->Secondary()->Func(function + 1);
        trans->Send();
        return trans;
    }
    Lines NewLines() {
        const Lines all = LogLines();
        Lines fresh(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
        seen_ = all.size();
        return fresh;
    }

    /// Runs behind the record of each error, inside the host's handler.
    void OnError(std::function<void(std::int32_t code)> handler) {
        Control().Events().Error =
            [record = Control().Events().Error, handler = std::move(handler)](
                std::int32_t code, const std::string& text, std::int32_t line) {
                record(code, text, line);
                handler(code);
            };
    }

private:
    std::size_t seen_ = 0;
};

}  // namespace hexmire::fakes
