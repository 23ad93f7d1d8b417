#pragma once

#include <hexmire/core/SECSItem.h>

namespace hexmire::testing_items {

/// A list item with one child of each format that a test asks for.
class Items {
public:
    Items() : list_(New<SECSItem>()) { list_->Format(FormatList); }

    /// A child of this format, living as long as this object.
    SECSItem& Of(enmItemFormat format) {
        const SECSItemPtr item = list_->AddNew(list_->ItemCount() + 1);
        item->Format(format);
        return *item;
    }

private:
    SECSItemPtr list_;
};

inline constexpr enmItemFormat kFormats[] = {FormatList,
                                             FormatBinary,
                                             FormatBoolean,
                                             FormatAscii,
                                             FormatI8,
                                             FormatI1,
                                             FormatI2,
                                             FormatI4,
                                             FormatF8,
                                             FormatF4,
                                             FormatU8,
                                             FormatU1,
                                             FormatU2,
                                             FormatU4,
                                             FormatVar};

}  // namespace hexmire::testing_items
