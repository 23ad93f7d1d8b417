#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace hexmire::fakes {

/// A process whose numbers have a decimal comma, for the time of one test. The locale is made below
/// the build folder from the locale data that scripts/setup installs.
class CommaLocale : public testing::Test {
protected:
    void SetUp() override {
        const std::filesystem::path folder =
            std::filesystem::path(HEXMIRE_BINARY_DIR) / "test-locales";
        std::filesystem::create_directories(folder);
        if (!std::filesystem::exists(folder / "de_DE")) {
            const std::string command = "localedef -i de_DE -f ISO-8859-1 '" +
                                        (folder / "de_DE").string() + "' > /dev/null 2>&1";
            static_cast<void>(std::system(command.c_str()));
        }
        ::setenv("LOCPATH", folder.c_str(), 1);
        ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE"), nullptr)
            << "no locale with a decimal comma can be made here: is the package locales installed?";
    }
    void TearDown() override {
        std::setlocale(LC_NUMERIC, "C");
        ::unsetenv("LOCPATH");
    }
};

}  // namespace hexmire::fakes
