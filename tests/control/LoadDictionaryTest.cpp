#include "../fakes/TestHost.h"
#include "DictionaryFile.h"
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorEvent;
using fakes::FakeXMLNode;
using fakes::TestHost;
using fakes::TransNode;
using Errors = std::vector<ErrorEvent>;
using Names = std::vector<std::string>;

/// A file of two transactions.
struct WithFile : TestHost {
    WithFile() {
        XML.Document = FakeXMLNode::Make(
            "SECSDictionary", {}, {TransNode("S1F1", "1", "1"), TransNode("S1F3", "1", "3")});
    }
};

TEST(LoadDictionary, AppendsTheFilesTransactions) {
    WithFile host;
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.XML.Loaded, (Names{"Default.xml"}));
    ASSERT_EQ(host.Control().SECSDictionary()->TransCount(), 2);
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(2)->Name(), "S1F3");
    EXPECT_EQ(host.Control().NewSECSTransaction("s1f3")->Primary()->Func(), 3);
    EXPECT_TRUE(host.Raised.empty());
}

TEST(LoadDictionary, UsesThePathAsItStands) {
    WithFile host;
    host.Control().SECSDictionaryFile("D:\\fab\\own dictionary.XML");
    host.Control().LoadXMLDictionary();
    host.Control().SECSDictionaryFile("");
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.XML.Loaded, (Names{"D:\\fab\\own dictionary.XML", ""}));
}

TEST(LoadDictionary, TwiceDoublesTheTemplates) {
    WithFile host;
    host.Control().LoadXMLDictionary();
    host.Control().SECSDictionary()->SECSTrans(1)->Name("edited");
    host.Control().LoadXMLDictionary();
    ASSERT_EQ(host.Control().SECSDictionary()->TransCount(), 4);
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(1)->Name(), "edited");
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(3)->Name(), "S1F1");
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(4)->Index(), 4);
}

TEST(LoadDictionary, AppendsBehindTheHostsOwnTemplates) {
    WithFile host;
    host.AddTemplate("own", 1, 1);
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(1)->Name(), "own");
    host.MessageReceived(fakes::Header(0, true, 1, 1, 1), {});
    EXPECT_EQ(host.Primaries.at(0)->Name(), "own");
}

TEST(LoadDictionary, ReportsAFileThatCannotBeReadOrParsed) {
    WithFile host;
    host.Control().LoadXMLDictionary();
    host.XML.Succeeds = false;
    host.XML.ErrorCode = -1072896760;
    std::int32_t codeInside = -1;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t n) {
            codeInside = host.Control().ErrorCode();
            record(code, text, n);
        };
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(
        host.Errors,
        (Errors{{2001, "(Hexmire-LoadXMLDictionary) Read and parsing xml input file failed.", 2}}));
    EXPECT_EQ(codeInside, 0);
    EXPECT_EQ(host.Control().ErrorCode(), 2001);
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 2);
}

TEST(LoadDictionary, IsSilentWhenTheParserHasNoCode) {
    WithFile host;
    host.XML.Succeeds = false;
    host.Control().LoadXMLDictionary();
    EXPECT_TRUE(host.Raised.empty());
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 0);
}

TEST(LoadDictionary, IgnoresACodeLeftBehindAfterASuccess) {
    WithFile host;
    host.XML.ErrorCode = 5;
    host.Control().LoadXMLDictionary();
    EXPECT_TRUE(host.Raised.empty());
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 2);
}

TEST(LoadDictionary, GoesOnBehindATransactionThatFaults) {
    WithFile host;
    host.XML.Document = FakeXMLNode::Make(
        "D",
        {},
        {FakeXMLNode::Make("Trans"), TransNode("S1F3", "1", "3"), FakeXMLNode::Make("Trans")});
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 3);
    EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(2)->Name(), "S1F3");
    const ErrorEvent fault{
        91, "(Hexmire-CreateTransObject) Object variable or With block variable not set", 0};
    EXPECT_EQ(host.Errors, (Errors{fault, fault}));
    EXPECT_EQ(host.Control().ErrorCode(), 91);
}

TEST(LoadDictionary, OfAnEmptyFileLoadsNothingInSilence) {
    WithFile host;
    host.XML.Document = FakeXMLNode::Make("D");
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 0);
    EXPECT_TRUE(host.Raised.empty());
}

TEST(LoadDictionary, ReportsADocumentWithoutElement) {
    WithFile host;
    host.XML.Document = nullptr;
    host.Control().LoadXMLDictionary();
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 91);
    EXPECT_TRUE(host.Errors[0].Text.starts_with("(Hexmire-LoadXMLDictionary) "));
}

TEST(LoadDictionary, ReportsAParserThatThrows) {
    struct Throwing : IXMLDocument {
        bool Load(const std::string&) override { throw std::runtime_error("disk on fire"); }
        [[nodiscard]] std::int32_t ParseErrorCode() const override { return 0; }
        [[nodiscard]] std::shared_ptr<const IXMLNode> DocumentElement() const override {
            return nullptr;
        }
    };
    TestHost host;
    Platform platform = host.MakePlatform();
    platform.NewXMLDocument = [] { return std::make_unique<Throwing>(); };
    Hexmire control(platform);
    Errors errors;
    control.Events().Error = [&](std::int32_t code, const std::string& text, std::int32_t) {
        errors.push_back({code, text, 0});
    };
    control.LoadXMLDictionary();
    EXPECT_EQ(errors, (Errors{{440, "(Hexmire-LoadXMLDictionary) disk on fire", 0}}));
}

TEST(LoadDictionary, MayBeCalledAgainFromTheErrorHandler) {
    WithFile host;
    host.XML.Succeeds = false;
    host.XML.ErrorCode = 1;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        host.XML.Succeeds = true;
        host.Control().LoadXMLDictionary();
    };
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 2);
    EXPECT_EQ(host.Control().ErrorCode(), 2001);
}

TEST(LoadDictionary, EndsInsideAHandlerThatEndsTheControl) {
    WithFile host;
    host.XML.Document = FakeXMLNode::Make(
        "D",
        {},
        {FakeXMLNode::Make("Trans"), TransNode("S1F3", "1", "3"), FakeXMLNode::Make("Trans")});
    const auto dictionary = host.Control().SECSDictionary();
    int errors = 0;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        if (++errors == 1) host.Control().ControlTerminate();
    };
    host.Control().LoadXMLDictionary();
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(host.Control().SECSDictionary(), nullptr);
    EXPECT_FALSE(host.Driver.Alive);
}

TEST(LoadDictionary, IsNotDoneByOpeningThePort) {
    WithFile host;
    host.Control().OpenPort();
    EXPECT_TRUE(host.XML.Loaded.empty());
}

}  // namespace
}  // namespace hexmire
