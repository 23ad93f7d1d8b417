#include <hexmire/hosting/XmlDocument.h>

#include "TempFolder.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using fakes::TempFolder;
using testing::ElementsAre;

class XmlDocumentTest : public testing::Test {
protected:
    bool Load(std::string_view bytes) { return document_.Load(folder_.Write("file.xml", bytes)); }
    [[nodiscard]] std::optional<std::string> Root(std::string_view attribute) const {
        return document_.DocumentElement()->Attribute(attribute);
    }
    void ExpectFailure() {
        EXPECT_NE(document_.ParseErrorCode(), 0);
        EXPECT_EQ(document_.DocumentElement(), nullptr);
    }

    TempFolder folder_;
    XmlDocument document_;
};

/// What the library writes to the standard error while it lives.
class StandardError {
public:
    StandardError() { testing::internal::CaptureStderr(); }
    [[nodiscard]] static std::string Take() { return testing::internal::GetCapturedStderr(); }
};

// --- Nodes ---------------------------------------------------------------------------------------

std::vector<std::string> Children(const std::shared_ptr<const IXMLNode>& parent) {
    std::vector<std::string> names;
    for (auto node = parent->FirstChild(); node != nullptr; node = node->NextSibling())
        names.push_back(node->IsElement() ? node->Name() : "-" + node->Name());
    return names;
}

TEST_F(XmlDocumentTest, children_come_in_document_order_whatever_their_kind) {
    ASSERT_TRUE(
        Load("<?xml version='1.0'?><D><Trans/>text<!-- c --><?p i?><trans/><![CDATA[x]]></D>"));
    EXPECT_EQ(document_.ParseErrorCode(), 0);
    EXPECT_EQ(document_.DocumentElement()->Name(), "D");
    EXPECT_THAT(Children(document_.DocumentElement()),
                ElementsAre("Trans", "-", "-", "-", "trans", "-"));
}

TEST_F(XmlDocumentTest, leaf_has_no_child_and_the_last_no_sibling) {
    ASSERT_TRUE(Load("<D><A/></D>"));
    const auto leaf = document_.DocumentElement()->FirstChild();
    EXPECT_EQ(leaf->FirstChild(), nullptr);
    EXPECT_EQ(leaf->NextSibling(), nullptr);
}

TEST_F(XmlDocumentTest, missing_attribute_differs_from_an_empty_one) {
    ASSERT_TRUE(Load("<D Value=''>t</D>"));
    EXPECT_EQ(Root("Value"), "");
    EXPECT_EQ(Root("value"), std::nullopt);
    EXPECT_EQ(document_.DocumentElement()->FirstChild()->Attribute("Value"), std::nullopt);
}

TEST_F(XmlDocumentTest, attribute_holds_what_its_references_stand_for) {
    ASSERT_TRUE(
        Load("<!DOCTYPE D [<!ENTITY fab 'Fab &lt;3&gt;'>]>"
             "<D Value='&lt;A&amp;&#65;&#xA; &quot;&apos;&fab;'/>"));
    EXPECT_EQ(Root("Value"), "<A&A\n \"'Fab <3>");
}

TEST_F(XmlDocumentTest, line_ends_and_tabs_in_an_attribute_become_blanks) {
    ASSERT_TRUE(Load("<D Value='a\r\nb\tc'/>"));
    EXPECT_EQ(Root("Value"), "a b c");
}

TEST_F(XmlDocumentTest, elements_inside_an_entity_are_elements) {
    ASSERT_TRUE(
        Load("<!DOCTYPE D [<!ENTITY items '<Item Name=\"i\"/><Item/>'>]>"
             "<D>&items;<Item/>&items;</D>"));
    EXPECT_THAT(Children(document_.DocumentElement()),
                ElementsAre("Item", "Item", "Item", "Item", "Item"));
    EXPECT_EQ(document_.DocumentElement()->FirstChild()->Attribute("Name"), "i");
}

TEST_F(XmlDocumentTest, names_are_those_written_in_the_file) {
    ASSERT_TRUE(
        Load("<s:D xmlns:s='urn:s' xmlns='urn:t' s:Name='1' Name='2'><Trans/><u:Trans/></s:D>"));
    EXPECT_EQ(document_.DocumentElement()->Name(), "s:D");
    EXPECT_EQ(Root("s:Name"), "1");
    EXPECT_EQ(Root("Name"), "2");
    EXPECT_THAT(Children(document_.DocumentElement()), ElementsAre("Trans", "u:Trans"));
}

TEST_F(XmlDocumentTest, node_keeps_its_document_alive) {
    ASSERT_TRUE(Load("<D><A Name='a'/></D>"));
    const auto node = document_.DocumentElement()->FirstChild();
    ASSERT_TRUE(Load("<E/>"));
    EXPECT_EQ(node->Attribute("Name"), "a");
    EXPECT_EQ(document_.DocumentElement()->Name(), "E");
}

TEST_F(XmlDocumentTest, failed_load_forgets_the_document_before) {
    ASSERT_TRUE(Load("<D/>"));
    EXPECT_FALSE(Load("<D>"));
    ExpectFailure();
    EXPECT_TRUE(Load("<D/>"));
    EXPECT_EQ(document_.ParseErrorCode(), 0);
    EXPECT_FALSE(document_.Load(folder_ / "missing.xml"));
    ExpectFailure();
}

// --- Encodings -----------------------------------------------------------------------------------

TEST_F(XmlDocumentTest, utf_8_comes_out_in_iso_8859_1) {
    ASSERT_TRUE(Load("<D Value='\xC2\xB5m \xC3\xBF \xC4\x80 \xE2\x82\xAC \xF0\x9F\x98\x80'/>"));
    EXPECT_EQ(Root("Value"), "\xB5m \xFF ? ? ?");
}

TEST_F(XmlDocumentTest, iso_8859_1_keeps_its_bytes) {
    std::string every;
    for (int byte = 0xA0; byte <= 0xFF; ++byte)
        every.push_back(static_cast<char>(byte));
    ASSERT_TRUE(Load("<?xml version='1.0' encoding='ISO-8859-1'?><D Value='" + every + "'/>"));
    EXPECT_EQ(Root("Value"), every);
}

std::string Utf16(std::string_view text, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text) {
        if (bigEndian) bytes.push_back('\0');
        bytes.push_back(c);
        if (!bigEndian) bytes.push_back('\0');
    }
    return bytes;
}

TEST_F(XmlDocumentTest, utf_16_of_both_byte_orders_is_read) {
    for (const bool bigEndian : {false, true}) {
        ASSERT_TRUE(
            Load(Utf16("<?xml version='1.0' encoding='UTF-16'?><D Value='\xB5'/>", bigEndian)));
        EXPECT_EQ(Root("Value"), "\xB5");
    }
}

TEST_F(XmlDocumentTest, shift_jis_is_read_and_kanji_become_question_marks) {
    ASSERT_TRUE(
        Load("<?xml version='1.0' encoding='Shift_JIS'?>"
             "<D Name='\x91\x95\x92\x75 A1' Desc='\xB1'/>"));
    EXPECT_EQ(Root("Name"), "?? A1");
    EXPECT_EQ(Root("Desc"), "?");
}

TEST_F(XmlDocumentTest, bytes_that_the_encoding_does_not_know_fail) {
    EXPECT_FALSE(Load("<D Value='\xFF'/>"));
    ExpectFailure();
    EXPECT_FALSE(Load("<?xml version='1.0' encoding='Shift_JIS'?><D Value='\x81\x20'/>"));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, unknown_encoding_fails) {
    EXPECT_FALSE(Load("<?xml version='1.0' encoding='EUC-FAB'?><D/>"));
    EXPECT_EQ(document_.ParseErrorCode(), XML_ERR_UNSUPPORTED_ENCODING);
}

// --- Files that are none -------------------------------------------------------------------------

TEST_F(XmlDocumentTest, missing_file_fails) {
    EXPECT_FALSE(document_.Load(folder_ / "missing.xml"));
    EXPECT_EQ(document_.ParseErrorCode(), XML_IO_ENOENT);
    ExpectFailure();
    EXPECT_FALSE(document_.Load(""));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, directory_fails) {
    EXPECT_FALSE(document_.Load(folder_.Path()));
    EXPECT_EQ(document_.ParseErrorCode(), XML_IO_EISDIR);
}

TEST_F(XmlDocumentTest, pipe_fails_at_once) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(document_.Load(folder_ / "pipe"));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, address_is_a_file_name_and_not_fetched) {
    EXPECT_FALSE(document_.Load("http://127.0.0.1:1/Default.xml"));
    EXPECT_EQ(document_.ParseErrorCode(), XML_IO_ENOENT);
    EXPECT_FALSE(document_.Load("file://" + folder_.Write("a.xml", "<D/>")));
    EXPECT_EQ(document_.ParseErrorCode(), XML_IO_ENOENT);
}

TEST_F(XmlDocumentTest, empty_file_fails) {
    EXPECT_FALSE(Load(""));
    EXPECT_EQ(document_.ParseErrorCode(), XML_ERR_DOCUMENT_EMPTY);
}

TEST_F(XmlDocumentTest, backslashes_of_a_path_reach_the_system_as_slashes) {
    std::filesystem::create_directory(folder_ / "dict");
    folder_.Write("dict/Default.xml", "<D/>");
    EXPECT_TRUE(document_.Load(folder_.Path() + "\\dict\\Default.xml"));
}

TEST_F(XmlDocumentTest, file_beyond_the_limit_fails) {
    const std::string path = folder_.Write("huge.xml", "<D/>");
    std::filesystem::resize_file(path, XmlDocument::kLargestFile + 1);  // Sparse.
    EXPECT_FALSE(document_.Load(path));
    EXPECT_EQ(document_.ParseErrorCode(), XML_IO_EFBIG);
}

TEST_F(XmlDocumentTest, endless_file_fails) {
    EXPECT_FALSE(document_.Load("/dev/zero"));
    ExpectFailure();
}

// --- Broken files --------------------------------------------------------------------------------

TEST_F(XmlDocumentTest, every_truncation_fails) {
    const std::string whole =
        "<?xml version='1.0'?><!DOCTYPE D [<!ENTITY e 'x'>]><D a='&e;'><Trans/><!--c--></D>";
    ASSERT_TRUE(Load(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(Load(whole.substr(0, length))) << length;
        ExpectFailure();
    }
}

TEST_F(XmlDocumentTest, file_that_is_not_well_formed_fails) {
    const std::string broken[] = {"<D></E>",
                                  "<D a='1' a='2'/>",
                                  "<D a=1/>",
                                  "<D>&nothing;</D>",
                                  "<D/><D/>",
                                  "text",
                                  "<D a='<'/>",
                                  "<D>]]></D>",
                                  "<D/>tail",
                                  "<D>&#0;</D>",
                                  "<D>\x01</D>",
                                  "<D>&#xD800;</D>",
                                  "<!-- -- --><D/>",
                                  "<D xml:a:b=''/",
                                  "<1/>",
                                  std::string("<D\0/>", 5),
                                  std::string("<D>\0</D>", 8),
                                  std::string("<D a='x\0y'/>", 12),
                                  std::string("<D/>\0", 5)};
    for (const std::string& text : broken) {
        EXPECT_FALSE(Load(text)) << text;
        ExpectFailure();
    }
}

TEST_F(XmlDocumentTest, nothing_is_printed_and_the_handler_of_the_host_stays) {
    int calls = 0;
    const xmlStructuredErrorFunc count = [](void* context, xmlErrorPtr) {
        ++*static_cast<int*>(context);
    };
    xmlSetStructuredErrorFunc(&calls, count);
    const StandardError captured;
    for (const char* text : {"<D>",
                             "<D>&nothing;</D>",
                             "<!DOCTYPE D [<!ELEMENT D EMPTY>]><D>t</D>",
                             "<?xml version='1.0' encoding='Shift_JIS'?><D Value='\x81\x20'/>",
                             "<?xml version='1.0' encoding='EUC-FAB'?><D/>",
                             "<a:D/>",
                             "<!DOCTYPE D SYSTEM 'http://127.0.0.1:1/d.dtd'><D/>"})
        Load(text);
    EXPECT_EQ(captured.Take(), "");
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(xmlStructuredError, count);
    EXPECT_EQ(xmlStructuredErrorContext, &calls);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

// --- Hostile files -------------------------------------------------------------------------------

TEST_F(XmlDocumentTest, entities_that_grow_by_powers_fail) {
    std::string text = "<!DOCTYPE D [<!ENTITY e0 'ha'>";
    for (int level = 1; level <= 30; ++level) {
        text += "<!ENTITY e" + std::to_string(level) + " '";
        for (int i = 0; i < 10; ++i)
            text += "&e" + std::to_string(level - 1) + ";";
        text += "'>";
    }
    for (const char* use : {"]><D>&e30;</D>", "]><D a='&e30;'/>"}) {
        EXPECT_FALSE(Load(text + use));
        EXPECT_EQ(document_.ParseErrorCode(), XML_ERR_ENTITY_LOOP);
    }
}

TEST_F(XmlDocumentTest, entity_that_is_used_over_and_over_fails) {
    const std::string declared = "<!DOCTYPE D [<!ENTITY e '" + std::string(100'000, 'x') + "'>]><D";
    std::string uses;
    for (int i = 0; i < 20'000; ++i)
        uses += "&e;";
    EXPECT_FALSE(Load(declared + ">" + uses + "</D>"));
    ExpectFailure();
    EXPECT_FALSE(Load(declared + " a='" + uses + "'/>"));
    ExpectFailure();
    std::string attributes;
    for (int i = 0; i < 20'000; ++i)
        attributes += "<I a='&e;'/>";
    EXPECT_FALSE(Load(declared + ">" + attributes + "</D>"));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, entity_that_holds_itself_fails) {
    EXPECT_FALSE(Load("<!DOCTYPE D [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><D>&a;</D>"));
    ExpectFailure();
    EXPECT_FALSE(Load("<!DOCTYPE D [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><D a='&a;'/>"));
    ExpectFailure();
    EXPECT_FALSE(Load("<!DOCTYPE D [<!ENTITY % p '&#37;p;'>%p;]><D/>"));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, entity_outside_the_file_reads_as_nothing) {
    const std::string secret = folder_.Write("secret.txt", "SECRET");
    const std::string declared = "<!DOCTYPE D [<!ENTITY e SYSTEM '" + secret + "'>]>";
    ASSERT_TRUE(Load(declared + "<D>&e;<A/>&e;</D>"));
    EXPECT_THAT(Children(document_.DocumentElement()), ElementsAre("A"));
    ASSERT_TRUE(Load(declared + "<D a='x&e;y'/>"));
    EXPECT_EQ(Root("a"), "xy");
}

TEST_F(XmlDocumentTest, parameter_entity_outside_the_file_reads_as_nothing) {
    const std::string dtd = folder_.Write("evil.dtd", "<!ENTITY e 'SECRET'><!ELEMENT D EMPTY>");
    ASSERT_TRUE(Load("<!DOCTYPE D [<!ENTITY % p SYSTEM '" + dtd + "'>%p;]><D a='x'>t</D>"));
    EXPECT_EQ(Root("a"), "x");
    ASSERT_TRUE(Load("<!DOCTYPE D [<!ENTITY % p SYSTEM '" + dtd + "'>%p;]><D a='&e;'/>"));
    EXPECT_EQ(Root("a"), "");
}

TEST_F(XmlDocumentTest, dtd_outside_the_file_is_not_read_and_the_file_loads_unvalidated) {
    const std::string dtd =
        folder_.Write("d.dtd", "<!ELEMENT E EMPTY><!ATTLIST D a CDATA 'SECRET'>");
    for (const std::string& id : {"SYSTEM '" + dtd + "'",
                                  "PUBLIC '-//X//Y' '" + dtd + "'",
                                  std::string("SYSTEM 'http://127.0.0.1:1/d.dtd'")}) {
        ASSERT_TRUE(Load("<!DOCTYPE D " + id + "><D><F/></D>"));
        EXPECT_EQ(Root("a"), std::nullopt);
        EXPECT_TRUE(Load("<!DOCTYPE D " + id + " [<!ELEMENT E EMPTY>]><D><F/></D>"));
    }
}

TEST_F(XmlDocumentTest, include_of_another_file_stays_an_element) {
    const std::string secret = folder_.Write("secret.txt", "SECRET");
    ASSERT_TRUE(
        Load("<D xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='text' href='" +
             secret + "'/></D>"));
    EXPECT_THAT(Children(document_.DocumentElement()), ElementsAre("xi:include"));
}

std::string Nested(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<Item>";
    for (int i = 0; i < depth; ++i)
        text += "</Item>";
    return text;
}

TEST_F(XmlDocumentTest, lists_nest_two_hundred_and_fifty_deep) {
    ASSERT_TRUE(Load(Nested(250)));
    int depth = 0;
    for (auto node = document_.DocumentElement(); node != nullptr; node = node->FirstChild())
        ++depth;
    EXPECT_EQ(depth, 250);
}

TEST_F(XmlDocumentTest, deeper_nesting_fails_cleanly) {
    for (const int depth : {1'000, 1'000'000}) {
        EXPECT_FALSE(Load(Nested(depth)));
        ExpectFailure();
    }
}

// --- Validation ----------------------------------------------------------------------------------

constexpr const char* kDtd =
    "<!DOCTYPE D [<!ELEMENT D (Trans*)><!ELEMENT Trans EMPTY>"
    "<!ATTLIST Trans Name CDATA #REQUIRED Desc CDATA 'none'>]>";

TEST_F(XmlDocumentTest, file_that_fits_the_declarations_it_carries_loads_with_their_defaults) {
    ASSERT_TRUE(Load(std::string(kDtd) + "<D>\n <Trans Name='S1F1'/>\n</D>"));
    EXPECT_THAT(Children(document_.DocumentElement()), ElementsAre("-", "Trans", "-"));
    EXPECT_EQ(document_.DocumentElement()->FirstChild()->NextSibling()->Attribute("Desc"), "none");
}

TEST_F(XmlDocumentTest, file_that_does_not_fit_the_declarations_it_carries_fails) {
    EXPECT_FALSE(Load(std::string(kDtd) + "<D><Trans/></D>"));
    EXPECT_EQ(document_.ParseErrorCode(), XML_DTD_MISSING_ATTRIBUTE);
    EXPECT_FALSE(Load(std::string(kDtd) + "<D><Item/></D>"));
    ExpectFailure();
    EXPECT_FALSE(Load(std::string(kDtd) + "<E/>"));
    ExpectFailure();
}

TEST_F(XmlDocumentTest, file_that_declares_nothing_but_entities_is_not_validated) {
    EXPECT_TRUE(Load("<!DOCTYPE D [<!ENTITY e 'x'>]><D><Any/>&e;</D>"));
    EXPECT_TRUE(Load("<!DOCTYPE D><D><Any/></D>"));
}

// --- Size ----------------------------------------------------------------------------------------

TEST_F(XmlDocumentTest, twenty_thousand_transactions_load) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        std::string text =
            "<?xml version='1.0' encoding='" + std::string(encoding) + "'?><Transactions>\n";
        for (int i = 0; i < 20'000; ++i) {
            text +=
                "<Trans Name='T" + std::to_string(i) +
                "' Desc='A transaction with a description of usual length'><Primary Stream='6' "
                "Func='11' Name='P' Desc='Event report'><Root><Item Name='L' Desc='' Format='L' "
                "IsArray='NO' Value=''><Item Name='DATAID' Desc='Data ID' Format='U4' "
                "IsArray='NO' Value='4294967295'/></Item></Root></Primary></Trans>\n";
        }
        ASSERT_TRUE(Load(text + "</Transactions>"));
        int count = 0;
        for (auto node = document_.DocumentElement()->FirstChild(); node != nullptr;
             node = node->NextSibling())
            count += node->IsElement() ? 1 : 0;
        EXPECT_EQ(count, 20'000);
    }
}

TEST_F(XmlDocumentTest, value_of_nine_million_characters_loads) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        const std::string value(9'000'000, '5');
        ASSERT_TRUE(Load("<?xml version='1.0' encoding='" + std::string(encoding) +
                         "'?><D Value='" + value + "'/>"));
        EXPECT_TRUE(Root("Value") == value);
    }
}

TEST_F(XmlDocumentTest, value_beyond_ten_million_characters_fails_cleanly) {
    EXPECT_FALSE(Load("<D Value='" + std::string(10'000'001, '5') + "'/>"));
    ExpectFailure();
}

}  // namespace
}  // namespace hexmire
