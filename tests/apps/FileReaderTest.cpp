#include "../hosting/TempFolder.h"
#include "Failure.h"
#include "FileReader.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using fakes::TempFolder;
using Lines = std::vector<std::string>;

constexpr std::size_t kMiB = std::size_t{1} << 20U;

Lines LinesOf(const std::string& path) {
    FileLines file(path, "it");
    Lines lines;
    while (auto line = file.Next(kMiB))
        lines.push_back(*std::move(line));
    return lines;
}

template <class Error, class Read>
std::string Refusal(Read read) {
    try {
        static_cast<void>(read());
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

TEST(FileReader, lines_come_without_their_ends) {
    const TempFolder folder;
    EXPECT_EQ(LinesOf(folder.Write("a", "")), Lines{});
    EXPECT_EQ(LinesOf(folder.Write("b", "\n")), Lines{""});
    EXPECT_EQ(LinesOf(folder.Write("c", "one\r\n\n two")), (Lines{"one\r", "", " two"}));
    Lines many;
    std::string text;
    for (std::size_t i = 0; i < 3'000; ++i) {
        many.emplace_back(i % 200, 'x');
        text += many.back() + '\n';
    }
    EXPECT_EQ(LinesOf(folder.Write("d", text)), many);
}

TEST(FileReader, line_has_a_bound) {
    const TempFolder folder;
    const std::string longest(kMiB, 'x');
    EXPECT_EQ(LinesOf(folder.Write("a", longest + "\n\n" + longest)),
              (Lines{longest, "", longest}));
    for (const char* end : {"x", "x\n", "xxxxx\nx"}) {
        const std::string path = folder.Write("b", longest + end);
        EXPECT_EQ(Refusal<UsageError>([&] { return LinesOf(path); }),
                  path + ": a line is longer than 1 MiB");
    }
}

TEST(FileReader, whole_file_has_a_bound) {
    const TempFolder folder;
    const std::string text(kMiB, 'x');
    const std::string path = folder.Write("a", text);
    EXPECT_EQ(FileReader(path, "it").ReadAll(), text);
    EXPECT_EQ(FileReader(path, "it").ReadAll(kMiB), text);
    EXPECT_EQ(Refusal<Failure>([] { return FileReader("/dev/zero", "it").ReadAll(kMiB); }),
              "it is larger than 1 MiB");
}

TEST(FileReader, what_cannot_be_read_is_told_with_its_reason) {
    const TempFolder folder;
    EXPECT_EQ(Refusal<Failure>([&] { return FileReader(folder / "none", "it").ReadAll(); }),
              "cannot read it: No such file or directory");
    EXPECT_EQ(Refusal<Failure>([&] { return LinesOf(folder.Path()); }),
              "cannot read it: Is a directory");
}

}  // namespace
}  // namespace hexmire::program
