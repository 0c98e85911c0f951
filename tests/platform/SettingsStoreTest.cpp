#include "platform/SettingsStore.h"

#include "platform/Clock.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

namespace korlan {
namespace {

using namespace std::literals;
using test::ErrorOf;
using test::ScopedVariable;
using test::TempDrive;

std::string Saved(const std::string& application, const std::string& section, const std::string& key) {
    return GetSetting(application, section, key, "<none>");
}

// The files below the store's folder.
std::vector<std::string> StoredFiles(const TempDrive& drive) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(drive.Top()))
        if (entry.is_regular_file()) files.push_back(entry.path().lexically_relative(drive.Top()).string());
    return files;
}

TEST(Settings, GiveBackWhateverWasStored) {
    const TempDrive drive;
    const std::vector<std::string> values = {
        "1/2/2024"s, ""s,        " outer blanks "s, "\"quoted\""s,          "a=b;c"s,
        "100%"s,     "%41"s,     "Größe € Ж"s,      "two\r\n[lines]\nx=1"s, "\ttab"s,
        "\xE9"s,     "C:\\x\\"s, "zero\0inside"s};
    const std::string names[] = {"NoUpdt", "a=b", "[Setup]", ";c", " blanks ", "", "Ж", "x]y", "line\nbreak"};
    for (const std::string& value : values)
        for (const std::string& name : names) {
            SaveSetting("Korlan", "S" + name, name, value);
            EXPECT_EQ(Saved("Korlan", "S" + name, name), value) << name;
            SaveSetting("Korlan", "S" + name, "other", "other");
            EXPECT_EQ(Saved("Korlan", "S" + name, name), value) << name;
        }
    EXPECT_EQ(Saved("korlan", "SNOUPDT", "noupdt"), values.back()); // names match without regard to case
    EXPECT_EQ(Saved("Korlan", "Setup", "none"), "<none>");
    EXPECT_EQ(Saved("Other", "SNoUpdt", "NoUpdt"), "<none>");
}

TEST(Settings, NoNameLeavesTheFolder) {
    const TempDrive drive;
    const std::string applications[] = {"../../escaped", "/abs", "..", ".", "registry", "a\0b"s};
    for (const std::string& application : applications) {
        SaveSetting(application, "S", "k", application);
        EXPECT_EQ(Saved(application, "S", "k"), application);
    }
    const auto files = StoredFiles(drive);
    EXPECT_EQ(files.size(), std::size(applications));
    EXPECT_THAT(files, testing::Each(testing::StartsWith("config/korlan/settings/")));
    struct stat status {};
    stat((drive.Top() / "config/korlan").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
}

TEST(Settings, AStoreThatCannotBeWrittenSaysSo) {
    const TempDrive drive;
    for (const auto& [application, section] : {std::pair(std::string(), "S"), {"A", ""}, {std::string(300, 'a'), "S"}})
        EXPECT_EQ(ErrorOf([&, a = application, s = section] { SaveSetting(a, s, "k", "v"); }), kErrInvalidCall);
    std::filesystem::remove_all(drive.Top() / "config/korlan");
    std::ofstream(drive.Top() / "config/korlan") << "a file in place of the folder";
    EXPECT_EQ(ErrorOf([] { SaveSetting("Korlan", "S", "k", "v"); }), kErrInvalidCall);
    EXPECT_EQ(Saved("Korlan", "S", "k"), "<none>");
}

TEST(Settings, LieInTheHomeFolderByDefault) {
    const TempDrive drive;
    std::filesystem::create_directory(drive.Top() / "home");
    const ScopedVariable home("HOME", (drive.Top() / "home").string());
    for (const auto& configured : {std::optional<std::string>(), std::optional<std::string>("relative")}) {
        const ScopedVariable config("XDG_CONFIG_HOME", configured);
        SaveSetting("Korlan", "Setup", "NoUpdt", "1");
        EXPECT_THAT(StoredFiles(drive), testing::ElementsAre("home/.config/korlan/settings/korlan.ini"));
    }
}

TEST(Registry, IsReadFromItsFile) {
    const TempDrive drive;
    const std::string shell = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell folders\\";
    EXPECT_EQ(ReadRegistryText(RegistryRoot::CurrentUser, shell, "Cache"), "Not Found");
    std::filesystem::create_directory(drive.Top() / "config/korlan");
    std::ofstream(drive.Top() / "config/korlan/registry.ini")
        << "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders]\n"
        << "Cache=C:\\Users\\x\\100%\\Cache\nEmpty=\nPercent=%\n[HKEY_LOCAL_MACHINE\\X]\nCache=machine\n";
    constexpr auto kUser = RegistryRoot::CurrentUser, kMachine = RegistryRoot::LocalMachine;
    EXPECT_EQ(ReadRegistryText(kUser, shell, "CACHE"), "C:\\Users\\x\\100%\\Cache");
    EXPECT_EQ(ReadRegistryText(kUser, shell, "Empty"), "");
    EXPECT_EQ(ReadRegistryText(kUser, shell, "Percent"), "%");
    EXPECT_EQ(ReadRegistryText(kUser, shell, "Other"), "Not Found");
    EXPECT_EQ(ReadRegistryText(kMachine, shell, "Cache"), "Not Found");
    EXPECT_EQ(ReadRegistryText(kMachine, "X", "Cache"), "machine");
}

// Two zones 26 hours apart never share a date.
TEST(Clock, TodayIsTheUsersToday) {
    const auto daysIn = [](const char* zone) {
        const ScopedVariable variable("TZ", zone);
        const CalendarDate date = Today();
        std::tm time{};
        time.tm_year = date.year - 1900, time.tm_mon = date.month - 1, time.tm_mday = date.day;
        return timegm(&time) / 86'400;
    };
    const std::time_t now = std::time(nullptr);
    EXPECT_EQ(daysIn("<-12>12"), (now - 12 * 3600) / 86'400);
    EXPECT_EQ(daysIn("<+14>-14"), (now + 14 * 3600) / 86'400);
    tzset();
}

} // namespace
} // namespace korlan
