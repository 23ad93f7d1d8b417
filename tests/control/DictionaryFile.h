#pragma once

#include "../fakes/FakeXMLDocument.h"

#include <memory>

/// Elements of a dictionary file.
namespace hexmire::fakes {

inline std::shared_ptr<FakeXMLNode> MessageNode(const char* element,
                                                const char* stream,
                                                const char* func) {
    return FakeXMLNode::Make(element,
                             {{"Stream", stream}, {"Func", func}, {"Name", ""}, {"Desc", ""}},
                             {FakeXMLNode::Make("Root")});
}

inline std::shared_ptr<FakeXMLNode> TransNode(const char* name,
                                              const char* stream,
                                              const char* func) {
    return FakeXMLNode::Make(
        "Trans",
        {{"Name", name}, {"Desc", ""}},
        {MessageNode("Primary", stream, func), MessageNode("Secondary", stream, "2")});
}

}  // namespace hexmire::fakes
