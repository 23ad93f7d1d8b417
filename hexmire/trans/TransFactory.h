#pragma once

#include <hexmire/trans/SECSTrans.h>

/// Copies of templates. Part of the same module of general routines as core/ModGeneral.h.
namespace hexmire::ModGeneral {

/// Fills a freshly created transaction from a template: device ID from the control, messages as
/// deep copies, everything else from the template; Index, InProgress and the T3 fields keep their
/// values.
void CreateNewTrans(const SECSTransPtr& target, const SECSTransPtr& source);
/// The same, but for one message of the target, which stays as it is.
void CreateNewTrans(const SECSTransPtr& target,
                    const SECSTransPtr& source,
                    const SECSMessage* kept);

/// Copies one message into another: header fields and a deep copy of the root's first item.
void CreateSECSMessage(const SECSMessagePtr& target, const SECSMessagePtr& source);

}  // namespace hexmire::ModGeneral
