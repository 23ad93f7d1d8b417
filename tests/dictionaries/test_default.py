#!/usr/bin/env python3
"""What the shipped dictionary promises its readers."""
import pathlib
import unittest
import xml.etree.ElementTree

DICTIONARY = pathlib.Path(__file__).parents[2] / "dictionaries" / "Default.xml"
FORMATS = set("L B BOOL A I8 I4 I2 I1 F8 F4 U8 U4 U2 U1 V".split())
ATTRIBUTES = {
    "Trans": {"Name", "Desc"},
    "Primary": {"Stream", "Func", "Name", "Desc"},
    "Secondary": {"Stream", "Func", "Name", "Desc"},
    "Root": set(),
    "Item": {"Name", "Desc", "Format", "IsArray", "Value"},
}
CHILDREN = {
    "Trans": ["Primary", "Secondary"],
    "Primary": ["Root"],
    "Secondary": ["Root"],
}


def shape(item):
    """An item as text: its format, its name, a star for an array, and its children."""
    star = "*" if item.get("IsArray") == "YES" else ""
    children = "{" + " ".join(shape(child) for child in item) + "}" if len(item) else ""
    return f"{item.get('Format')}{star}{':' if item.get('Name') else ''}{item.get('Name')}{children}"


class DefaultDictionary(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = xml.etree.ElementTree.parse(DICTIONARY).getroot()
        cls.by_name = {trans.get("Name"): trans for trans in cls.root}

    def body(self, name, element):
        return " ".join(shape(item) for item in self.by_name[name].find(element).find("Root"))

    def test_it_holds_all_transactions_of_the_standard_under_unique_names(self):
        self.assertEqual(268, len(self.root))
        self.assertEqual(268, len(self.by_name))

    def test_every_element_carries_exactly_its_attributes_and_children(self):
        for element in self.root.iter():
            if element is self.root:
                self.assertEqual({"Trans"}, {child.tag for child in element})
                continue
            self.assertEqual(ATTRIBUTES[element.tag], set(element.attrib), element.attrib)
            children = [child.tag for child in element]
            if element.tag in CHILDREN:
                self.assertEqual(CHILDREN[element.tag], children)
            else:
                self.assertLessEqual(set(children), {"Item"})

    def test_a_transaction_pairs_an_odd_primary_with_the_next_function(self):
        for name, trans in self.by_name.items():
            primary, secondary = trans.find("Primary"), trans.find("Secondary")
            stream, function = int(primary.get("Stream")), int(primary.get("Func"))
            self.assertEqual(f"S{stream}F{function}", name)
            self.assertEqual(name, primary.get("Name"))
            self.assertTrue(1 <= stream <= 127 and 1 <= function <= 255 and function % 2 == 1, name)
            self.assertEqual(stream, int(secondary.get("Stream")))
            self.assertEqual(function + 1, int(secondary.get("Func")))
            self.assertIn(secondary.get("Name"), ("", f"S{stream}F{function + 1}"))

    def test_a_body_has_one_top_item_at_most_and_legal_formats(self):
        for root in self.root.iter("Root"):
            self.assertLessEqual(len(root), 1)
        for item in self.root.iter("Item"):
            self.assertIn(item.get("Format"), FORMATS)
            self.assertIn(item.get("IsArray"), ("YES", "NO"))
            if len(item):
                self.assertEqual("L", item.get("Format"))

    def test_well_known_bodies_have_their_shape(self):
        self.assertEqual("", self.body("S1F1", "Primary"))
        self.assertEqual("L{A:MDLN A:SOFTREV}", self.body("S1F1", "Secondary"))
        self.assertEqual("L{B:COMMACK L{A:MDLN A:SOFTREV}}", self.body("S1F13", "Secondary"))
        self.assertEqual(
            "L{U4:DATAID U4:CEID L{L{U4:RPTID L{V:V}}}}", self.body("S6F11", "Primary")
        )
        self.assertEqual("B:ACKC6", self.body("S6F11", "Secondary"))
        self.assertEqual("B*:MHEAD", self.body("S9F7", "Primary"))
        self.assertEqual("", self.body("S9F7", "Secondary"))


if __name__ == "__main__":
    unittest.main()
