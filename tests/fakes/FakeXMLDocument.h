#pragma once

#include <hexmire/platform/IXMLDocument.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::fakes {

/// A node built in the test. Children are given once; siblings are linked by Link().
class FakeXMLNode : public IXMLNode {
public:
    using Attributes = std::map<std::string, std::string, std::less<>>;
    using Children = std::vector<std::shared_ptr<FakeXMLNode>>;

    /// An element with attributes and children; an empty name makes a text or comment node.
    static std::shared_ptr<FakeXMLNode> Make(std::string name,
                                             Attributes attributes = {},
                                             Children children = {}) {
        auto node = std::make_shared<FakeXMLNode>();
        node->name_ = std::move(name);
        node->attributes_ = std::move(attributes);
        for (std::size_t index = 0; index + 1 < children.size(); ++index) {
            children[index]->next_ = children[index + 1];
        }
        if (!children.empty()) node->first_ = children.front();
        return node;
    }

    [[nodiscard]] bool IsElement() const override { return !name_.empty(); }
    [[nodiscard]] std::string Name() const override { return name_; }
    [[nodiscard]] std::optional<std::string> Attribute(std::string_view name) const override {
        const auto found = attributes_.find(name);
        if (found == attributes_.end()) return std::nullopt;
        return found->second;
    }
    [[nodiscard]] std::shared_ptr<const IXMLNode> FirstChild() const override { return first_; }
    [[nodiscard]] std::shared_ptr<const IXMLNode> NextSibling() const override { return next_; }

private:
    std::string name_;
    Attributes attributes_;
    std::shared_ptr<FakeXMLNode> first_;
    std::shared_ptr<FakeXMLNode> next_;
};

/// What the test wants the next Load to find; it outlives the document.
struct XMLRecord {
    std::vector<std::string> Loaded;  ///< paths, in order
    std::shared_ptr<FakeXMLNode> Document;
    bool Succeeds = true;
    std::int32_t ErrorCode = 0;
};

class FakeXMLDocument : public IXMLDocument {
public:
    explicit FakeXMLDocument(XMLRecord& record) : record_(record) {}
    bool Load(const std::string& path) override {
        record_.Loaded.push_back(path);
        return record_.Succeeds;
    }
    [[nodiscard]] std::int32_t ParseErrorCode() const override { return record_.ErrorCode; }
    [[nodiscard]] std::shared_ptr<const IXMLNode> DocumentElement() const override {
        return record_.Document;
    }

private:
    XMLRecord& record_;
};

}  // namespace hexmire::fakes
