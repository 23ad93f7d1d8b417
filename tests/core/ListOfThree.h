#pragma once

#include <hexmire/core/SECSItem.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::testing_items {

/// Names and positions of a list's children in order: "A1 B2 C3"; a child without name is "-".
inline std::string OrderOf(const SECSItem& list) {
    std::string text;
    for (const SECSItemPtr& child : list) {
        if (!text.empty()) text += ' ';
        text += (child->Name().empty() ? "-" : child->Name()) + std::to_string(child->ItemIndex());
    }
    return text;
}

/// A list of three children named A, B and C, and whatever is reported.
class ListOfThree : public testing::Test {
protected:
    ListOfThree() {
        List->Format(FormatList);
        for (const char* name : {"A", "B", "C"}) {
            Children.push_back(List->AddNew(List->ItemCount() + 1));
            Children.back()->Name(name);
        }
    }
    [[nodiscard]] std::string Order() const { return OrderOf(*List); }

    fakes::ErrorRecorder Site;
    SECSItemPtr List = New<SECSItem>();
    std::vector<SECSItemPtr> Children;
};

}  // namespace hexmire::testing_items
