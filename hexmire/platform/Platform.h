#pragma once

#include <hexmire/platform/IContainer.h>
#include <hexmire/platform/IXMLDocument.h>
#include <hexmire/platform/SECSIService.h>
#include <hexmire/support/IClock.h>
#include <hexmire/support/IFileSystem.h>

#include <functional>
#include <memory>
#include <string>

namespace hexmire {

/// Everything that a control needs of its surroundings. The references outlive the control.
struct Platform {
    /// Makes the control's driver, which reports to the given sink for as long as it lives.
    std::function<std::unique_ptr<SECSIService>(SECSIServiceEvents&)> NewDriver;
    /// Makes the control's XML document.
    std::function<std::unique_ptr<IXMLDocument>()> NewXMLDocument;
    IContainer& Container;
    IFileSystem& Files;
    IClock& Clock;
    /// Folder of the running executable, without a trailing separator.
    std::string ApplicationFolder;
    /// False: the control makes no log object, and no message log is written.
    bool MessageLog = true;
};

}  // namespace hexmire
