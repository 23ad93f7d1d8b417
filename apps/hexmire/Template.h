#pragma once

#include <hexmire/hexmire.h>

namespace hexmire::program {

/// How the dictionary file marks a transaction whose primary nobody answers: its secondary has
/// neither name, description nor body.
[[nodiscard]] bool HasReply(const SECSTrans& trans);

/// Takes the example element out of every list that repeats (its description begins with "any
/// number of") unless a value stands somewhere in it.
void DropExamples(const SECSMessage& message);

/// True when an item of the message has a value.
[[nodiscard]] bool HoldsValues(const SECSMessage& message);

/// Makes the working copy of a template ready for its way out: without the W-bit when nobody
/// answers, and without examples in the primary.
void PrepareSending(SECSTrans& trans);

}  // namespace hexmire::program
