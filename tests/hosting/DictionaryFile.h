#pragma once

#include <hexmire/hosting/XmlDocument.h>

#include "../fakes/TestHost.h"
#include "../fakes/VariantText.h"
#include "TempFolder.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::fakes {

/// A control that loads real files with the real parser. Errors are kept as "code text".
class DictionaryFile : public TestHost {
public:
    DictionaryFile() : control_(RealPlatform()) {
        control_.Events().Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
            Reported.push_back(std::to_string(code) + " " + text);
            if (OnError) OnError();
        };
    }

    Hexmire& Loader() { return control_; }
    /// Writes the file that the control loads from now on.
    void Write(std::string_view xml) {
        control_.SECSDictionaryFile(folder_.Write("dictionary.xml", xml));
    }
    void Load(std::string_view xml) {
        Write(xml);
        control_.LoadXMLDictionary();
    }
    /// Every template: "name|description P S1F3 name|description (items) S S1F4 name|description".
    [[nodiscard]] std::vector<std::string> Templates() {
        std::vector<std::string> templates;
        for (const SECSTransPtr& trans : *control_.SECSDictionary()) {
            templates.push_back(trans->Name() + "|" + trans->Description() + " P " +
                                Text(*trans->Primary()) + " S " + Text(*trans->Secondary()));
        }
        return templates;
    }

    std::vector<std::string> Reported;
    std::function<void()> OnError;

private:
    Platform RealPlatform() {
        Platform platform = MakePlatform();
        platform.NewXMLDocument = [] { return std::make_unique<XmlDocument>(); };
        return platform;
    }
    static std::string Text(const SECSMessage& message) {
        return "S" + std::to_string(message.Stream()) + "F" + std::to_string(message.Func()) + " " +
               message.Name() + "|" + message.Description() + ItemsOf(*message.Root());
    }
    /// " (name:format value, ...)"; nothing without items.
    static std::string ItemsOf(const SECSItem& parent) {
        std::string text;
        for (const SECSItemPtr& item : parent) {
            text += (text.empty() ? " (" : ", ") + item->Name() + ":" +
                    std::to_string(item->Format()) + " " + Show(item->Value()) + ItemsOf(*item);
        }
        return text.empty() ? text : text + ")";
    }

    TempFolder folder_;
    Hexmire control_;
};

/// A file of one transaction: what stands in `primary` and `secondary` are whole elements.
inline std::string TransFile(const std::string& primary, const std::string& secondary) {
    return "<D><Trans Name='T' Desc='t'>" + primary + secondary + "</Trans></D>";
}

/// A message element with these items.
inline std::string MessageElement(const std::string& element, const std::string& items = {}) {
    const std::string function = element == "Primary" ? "3" : "4";
    return "<" + element + " Stream='1' Func='" + function + "' Name='n' Desc='d'><Root>" + items +
           "</Root></" + element + ">";
}

inline std::string ItemElement(const std::string& name,
                               const std::string& format,
                               const std::string& isArray,
                               const std::string& value,
                               const std::string& children = {}) {
    return "<Item Name='" + name + "' Desc='' Format='" + format + "' IsArray='" + isArray +
           "' Value='" + value + "'>" + children + "</Item>";
}

}  // namespace hexmire::fakes
