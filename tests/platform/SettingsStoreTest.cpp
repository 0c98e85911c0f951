#include "platform/SettingsStore.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace std::literals;
using test::ErrorOf;
using test::TempDrive;

std::string Saved(const std::string& application, const std::string& section, const std::string& key) {
    return GetSetting(application, section, key, "<none>");
}

TEST(Settings, GiveBackWhateverWasStored) {
    const TempDrive drive;
    std::vector<std::string> values = {""s,    " outer blanks "s, "\"quoted\""s,          "a=b;c"s,
                                       "%41"s, "Größe € Ж"s,      "two\r\n[lines]\nx=1"s, "zero\0inside"s};
    if (!test::kOnWindows) values.push_back("\xE9"); // a store of bytes, not of characters
    const std::string names[] = {"NoUpdt", "a=b", "[Setup]", ";c", " blanks ", "", "Ж", "x]y", "line\nbreak"};
    for (const std::string& value : values)
        for (const std::string& name : names) {
            SaveSetting("Korlan", "S" + name, name, value);
            EXPECT_EQ(Saved("Korlan", "S" + name, name), value) << name;
            SaveSetting("Korlan", "S" + name, "other", "other");
            EXPECT_EQ(Saved("Korlan", "S" + name, name), value) << name;
        }
    EXPECT_EQ(Saved("korlan", "SNOUPDT", "noupdt"), values.back()); // names match without regard to case
    EXPECT_EQ(Saved("Other", "SNoUpdt", "NoUpdt"), "<none>");
}

TEST(Settings, NoNameLeavesTheFolder) {
    ONLY_ON_LINUX("the registry has no folders");
    const TempDrive drive;
    const std::string applications[] = {"../../escaped", "/abs", "..", ".", "registry", "a\0b"s};
    for (const std::string& application : applications) {
        SaveSetting(application, "S", "k", application);
        EXPECT_EQ(Saved(application, "S", "k"), application);
    }
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(drive.Top())) {
        if (!entry.is_regular_file()) continue;
        ++files;
        EXPECT_EQ(entry.path().parent_path(), drive.Top() / "config/korlan/settings");
    }
    EXPECT_EQ(files, std::size(applications));
    EXPECT_EQ(std::filesystem::status(drive.Top() / "config/korlan").permissions(), std::filesystem::perms::owner_all);
}

TEST(Settings, AStoreThatCannotBeWrittenSaysSo) {
    const TempDrive drive;
    for (const auto& [application, section] : {std::pair(std::string(), "S"), {"A", ""}, {std::string(300, 'a'), "S"}})
        EXPECT_EQ(ErrorOf([&, a = application, s = section] { SaveSetting(a, s, "k", "v"); }), kErrInvalidCall);
    if (test::kOnWindows) return; // its store is always there
    std::filesystem::remove_all(drive.Top() / "config/korlan");
    std::ofstream(drive.Top() / "config/korlan") << "a file in place of the folder";
    EXPECT_EQ(ErrorOf([] { SaveSetting("Korlan", "S", "k", "v"); }), kErrInvalidCall);
    EXPECT_EQ(Saved("Korlan", "S", "k"), "<none>");
}

TEST(Registry, IsReadFromItsFile) {
    const std::string shell = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell folders\\";
    if (test::kOnWindows) {
        EXPECT_THAT(ReadRegistryText(RegistryRoot::CurrentUser, shell, "CACHE"), testing::StartsWith("C:\\users\\"));
        EXPECT_EQ(ReadRegistryText(RegistryRoot::CurrentUser, shell, "Other"), "Not Found");
        return;
    }
    const TempDrive drive;
    std::filesystem::create_directory(drive.Top() / "config/korlan");
    std::ofstream(drive.Top() / "config/korlan/registry.ini")
        << "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders]\n"
        << "Cache=C:\\Users\\x\\100%\\Cache\nPercent=%\n[HKEY_LOCAL_MACHINE\\X]\nCache=machine\n";
    constexpr auto kUser = RegistryRoot::CurrentUser, kMachine = RegistryRoot::LocalMachine;
    EXPECT_EQ(ReadRegistryText(kUser, shell, "CACHE"), "C:\\Users\\x\\100%\\Cache");
    EXPECT_EQ(ReadRegistryText(kUser, shell, "Percent"), "%");
    EXPECT_EQ(ReadRegistryText(kUser, shell, "Other"), "Not Found");
    EXPECT_EQ(ReadRegistryText(kMachine, "X", "Cache"), "machine");
}

} // namespace
} // namespace korlan
