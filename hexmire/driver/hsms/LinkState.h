#pragma once

#include <hexmire/driver/hsms/LinkMachine.h>

namespace hexmire::hsms {

/// A row of the state table. An empty cell means: not expected here; count it and stay.
struct LinkMachine::State {
    using Cell = Next (*)(LinkMachine&);
    using FrameCell = Next (*)(LinkMachine&, const FrameHeader&);
    using LossCell = Next (*)(LinkMachine&, const Loss&);

    std::string_view Name;
    bool ReadsFrames = false;  ///< bytes are taken apart; elsewhere they are dropped
    bool SendsData = false;    ///< messages are queued; elsewhere they are refused
    bool Closes = false;       ///< this side is closing; nothing more goes to the control
    void (*Enter)(LinkMachine&) = nullptr;
    void (*Exit)(LinkMachine&) = nullptr;

    Cell OnOpen = nullptr;
    Cell OnClose = nullptr;
    Cell OnMoved = nullptr;
    Cell OnConnected = nullptr;
    Cell OnConnectFailed = nullptr;
    Cell OnListenFailed = nullptr;
    Cell OnWritten = nullptr;
    LossCell OnLost = nullptr;

    FrameCell OnData = nullptr;
    FrameCell OnSelectReq = nullptr;
    FrameCell OnSelectRsp = nullptr;
    FrameCell OnDeselectReq = nullptr;
    FrameCell OnDeselectRsp = nullptr;
    FrameCell OnLinktestReq = nullptr;
    FrameCell OnLinktestRsp = nullptr;
    FrameCell OnRejectReq = nullptr;
    FrameCell OnSeparateReq = nullptr;

    Cell OnT5 = nullptr;
    Cell OnConnectTimeout = nullptr;
    Cell OnCrossing = nullptr;
    Cell OnT7 = nullptr;
    Cell OnLinktestDue = nullptr;
    Cell OnLinger = nullptr;
};

}  // namespace hexmire::hsms
