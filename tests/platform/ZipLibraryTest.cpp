// Archives with everything that a server, a tool or an attacker may put into them, on real files.
#include "platform/ZipLibrary.h"
#include "TestData.h"

#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ZipWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace korlan {
namespace {

using namespace test;
using namespace std::string_literals;
using testing::ElementsAre;
using Names = std::vector<std::string>;

class ZipLibraryTest : public testing::Test {
protected:
    ZipLibraryTest() {
        functions_.replace = [this](const std::string& member) {
            asked_.push_back(member);
            return asked_.size() > answers_.size() ? kOverwriteNo : answers_[asked_.size() - 1];
        };
        functions_.password = [this](std::string& password, std::size_t, const std::string& member) {
            asked_.push_back(member);
            if (asked_.size() > passwords_.size()) return kPasswordSkip;
            password = passwords_[asked_.size() - 1];
            return kPasswordGiven;
        };
        functions_.print = [](std::string_view) { return 0; };
    }

    std::int32_t Unzip(const ZipWriter& archive) { return Unzip(archive.Bytes()); }
    std::int32_t Unzip(const std::string& bytes) {
        drive_.Write("A.ZIP", bytes);
        return Unzip();
    }
    std::int32_t Unzip() {
        DCL options;
        options.lpszZipFN = "C:\\A.ZIP";
        options.lpszExtractDir = "C:\\OUT";
        asked_.clear();
        return Wiz_SingleEntryUnzip(0, {}, 0, {}, options, functions_);
    }

    void EmptyOut() {
        std::filesystem::remove_all(drive_.HostPathOf("OUT"));
        drive_.MakeFolders("OUT");
    }

    // "NAME=content;" of each file in the extraction folder.
    std::string Out() const {
        std::string out;
        for (const auto& name : drive_.Names("OUT")) out += name + "=" + drive_.Read("OUT/" + name) + ";";
        return out;
    }

    TempDrive drive_;
    USERFUNCTIONS functions_;
    std::vector<std::int32_t> answers_;
    Names passwords_, asked_; // asked_: the members of both kinds of question
};

TEST_F(ZipLibraryTest, MembersLandUnderTheirLastComponent) {
    constexpr std::uint32_t kUnix = 0x0314, kNtfs = 0x0B14, kUtf8 = 0x800;
    const std::string longest(255, 'n');
    const auto lands = [&](const ZipEntry& entry, const std::string& landed) { // "" = refused
        SCOPED_TRACE(testing::PrintToString(entry.name));
        EmptyOut();
        EXPECT_EQ(Unzip(ZipWriter().Add(entry)), landed.empty() ? 1 : 0);
        EXPECT_EQ(drive_.Names("OUT"), landed.empty() ? Names{} : Names{landed});
        EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "OUT"));
    };
    const std::pair<std::string, std::string> plainNames[] = {
        {"sub/deep/A.DLL", "A.DLL"},   {"sub\\deep\\A.DLL", "A.DLL"},         {"../../up.txt", "up.txt"},
        {"/tmp/root.txt", "root.txt"}, {"C:\\WINDOWS\\a.txt", "a.txt"},       {longest, longest},
        {"tail.txt. .", "tail.txt"},   {"\x81lwechsel.txt", "ülwechsel.txt"},
    };
    for (const auto& [name, landed] : plainNames) lands({name, "x"}, landed);
    for (const auto& name :
         {""s, ".."s, "sub\\."s, "C:a.txt"s, "a.txt:stream"s, "a.txt\0.exe"s, "a\nb"s, ".klnunzip7"s, longest + "n"})
        lands({name, "x"}, "");
    lands({.name = "\xFClwechsel.txt", .data = "x", .maker = kNtfs}, "ülwechsel.txt");
    lands({.name = "\xFClwechsel.txt", .data = "x", .maker = kUnix}, "ülwechsel.txt");
    lands({.name = "дом/схема.txt", .data = "x", .maker = kUnix, .flags = kUtf8}, "схема.txt");
}

TEST_F(ZipLibraryTest, OnlyFilesAreMadeOfMembers) {
    const auto unixEntry = [](const std::string& name, std::uint32_t mode) {
        return ZipEntry{.name = name, .data = "/etc/passwd", .maker = 0x0314, .attributes = mode << 16};
    };
    const ZipEntry marked{.name = "marked", .data = "", .attributes = 0x10};
    EXPECT_EQ(Unzip(ZipWriter()
                        .Add({"folder/", ""})
                        .Add(marked)
                        .Add(unixEntry("tool", 0100755))
                        .Bytes("PK\5\6, "s + std::string(30, '.'))),
              0)
        << "a comment may hold the mark of the end";
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("tool"));
    ZipEntry unreadable = unixEntry("link", 0120777);
    unreadable.method = 97;
    const ZipWriter refused[] = {
        ZipWriter().Add(unixEntry("link", 0120777)), ZipWriter().Add(unixEntry("device", 0020666)),
        ZipWriter().Add(unixEntry("pipe", 0010666)), ZipWriter().Add(unreadable),
        ZipWriter().Add({"folder/", "data"}),        ZipWriter().Add({"after", "x"}).RepeatEntry(),
    };
    for (ZipWriter archive : refused) {
        EmptyOut();
        EXPECT_EQ(Unzip(archive.Add({"after", "x"})), 1) << &archive - refused;
        EXPECT_THAT(drive_.Names("OUT"), ElementsAre("after")) << &archive - refused;
        answers_.assign(2, kOverwriteYes);
    }
}

#ifndef _WIN32 // where every file may run
TEST_F(ZipLibraryTest, ProgramsStayPrograms) {
    const auto runs = [&](const char* name) { return access(drive_.HostPathOf(name).c_str(), X_OK) == 0; };
    answers_ = {kOverwriteYes};
    for (const char* name : {"OUT/There", "OUT/Erased", "OUT/Data"}) drive_.Write(name, "old");
    for (const char* name : {"OUT/There", "OUT/Erased"}) drive_.SetMode(name, 0755);
    EXPECT_TRUE(EraseFile("C:\\OUT\\ERASED") && EraseFile("C:\\OUT\\DATA"));
    const std::string elf = "\x7F"
                            "ELF";
    EXPECT_EQ(Unzip(ZipWriter()
                        .Add({"there", "x"})
                        .Add({"ERASED", "x"})
                        .Add({"data", "x"})
                        .Add({"elf", elf})
                        .Add({"script", "#!/bin/sh\n"})
                        .Add({.name = "tool", .data = "x", .maker = 0x0314, .attributes = 0100755u << 16})),
              0);
    for (const char* name : {"OUT/There", "OUT/ERASED", "OUT/elf", "OUT/script", "OUT/tool"})
        EXPECT_TRUE(runs(name)) << name;
    EXPECT_FALSE(runs("OUT/data"));
}
#endif

TEST_F(ZipLibraryTest, AFileUnderWayGoesWithWhoeverEndsTheWork) {
    drive_.Write("OUT/.klnunzip1", "of a process that was killed");
    const ZipWriter archive = ZipWriter().Add({"A.TXT", "new"});
    functions_.message = [](const ListedMember&) { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
    functions_.service = [this] {
        EXPECT_EQ(drive_.Names("OUT").size(), 1u) << "the file under way, no other";
        throw 1;
    };
    EXPECT_THROW(Unzip(archive), int);
    EXPECT_EQ(Out(), "");
    if (kOnWindows) return; // the file goes when the next process extracts to the folder
    functions_.service = [] { EndProcess(); };
    EXPECT_EXIT(Unzip(archive), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Out(), "");
}

TEST_F(ZipLibraryTest, MembersKeepTheirOwnTime) {
    constexpr const char *kWest = "EST5EDT,M3.2.0,M11.1.0", *kEast = "CET-1CEST,M3.5.0,M10.5.0/3";
    const std::tuple<const char*, std::uint32_t, std::uint32_t, std::optional<std::int32_t>, std::int64_t> cases[] = {
        // 2025-03-30: 02:00 to 03:00 do not exist. 1743296400 is 01:00 UTC, the change.
        {kEast, DosDate(2025, 3, 30), DosTime(2, 30, 0), {}, 1743296400 + 1800},
        {kWest, DosDate(2025, 11, 2), DosTime(3, 0, 0), {}, 1762070400}, // an hour and more behind the change
        // 2025-10-26: 02:00 to 03:00 come twice. 1761440400 is 01:00 UTC, the change; the first is taken.
        {kEast, DosDate(2025, 10, 26), DosTime(2, 30, 0), {}, 1761440400 - 1800},
        // An extended stamp holds in every zone, before 1970 as well.
        {kWest, DosDate(1980, 1, 1), DosTime(0, 0, 0), -86399, -86399},
    };
    for (const auto& [zone, date, time, extended, seconds] : cases) {
        if (kOnWindows && !extended) continue; // the zone is the system's there, for all programs
        const ScopedVariable variable("TZ", zone);
        tzset();
        EmptyOut();
        const ZipEntry entry{.name = "A.TXT", .data = "x", .date = date, .time = time, .extendedTime = extended};
        EXPECT_EQ(Unzip(ZipWriter().Add(entry)), 0);
        const std::int32_t handle = OpenForStamp("C:\\OUT\\A.TXT");
        std::int64_t ticks = 0;
        EXPECT_TRUE(ReadWriteTime(handle, ticks));
        CloseStamp(handle);
        EXPECT_EQ(ticks / 10'000'000 - 11'644'473'600, seconds) << zone << " " << date << " " << time;
    }
    tzset();
}

TEST_F(ZipLibraryTest, AsksBeforeItReplaces) {
    const auto archive = ZipWriter().Add({"x/A.TXT", "new"}).Add({"b.txt", "new"}).Add({"C.TXT", "new"});
    const Names members{"x/A.TXT", "b.txt", "C.TXT"}, firstTwo{"x/A.TXT", "b.txt"};
    const std::tuple<std::vector<std::int32_t>, Names, std::string> cases[] = {
        // one file keeps its one name
        {{kOverwriteYes, kOverwriteNo, kOverwriteYes}, members, "A.TXT=new;B.TXT=old;C.TXT=new;"},
        {{kOverwriteNo, kOverwriteAll}, firstTwo, "A.TXT=old;B.TXT=new;C.TXT=new;"},
        {{kOverwriteYes, kOverwriteNone}, firstTwo, "A.TXT=new;B.TXT=old;C.TXT=old;"},
    };
    for (const auto& [answers, asked, out] : cases) {
        for (const char* name : {"OUT/A.TXT", "OUT/B.TXT", "OUT/C.TXT"}) drive_.Write(name, "old");
        drive_.SetMode("OUT/C.TXT", 0444);
        answers_ = answers;
        EXPECT_EQ(Unzip(archive), 0);
        EXPECT_EQ(asked_, asked);
        EXPECT_EQ(Out(), out);
    }
}

TEST_F(ZipLibraryTest, ATargetInUseStaysAsItIs) {
    drive_.Write("OUT/A.TXT", "old");
    answers_ = {kOverwriteYes};
    {
        const test::HeldFile held(drive_.HostFile("OUT/A.TXT"));
        EXPECT_EQ(Unzip(ZipWriter().Add({"A.TXT", "new"}).Add({"B.TXT", "new"})) != 0, kOnWindows);
    }
    EXPECT_THAT(Out(), testing::StartsWith(kOnWindows ? "A.TXT=old;" : "A.TXT=new;B.TXT=new;"));
}

TEST_F(ZipLibraryTest, WhichFileAMemberReplaces) {
    EXPECT_EQ(Unzip(ZipWriter().Add({"x/A.TXT", "first"}).Add({"y/a.txt", "second"})), 0);
    EXPECT_THAT(asked_, ElementsAre("y/a.txt")) << "the second member of a name";
    if (kOnWindows) return; // a user may make no links there
    answers_ = {kOverwriteYes};
    drive_.Write("OUTSIDE.TXT", "mine");
    std::filesystem::create_symlink(drive_.HostPathOf("OUTSIDE.TXT"), drive_.HostPathOf("OUT/LINK"));
    EXPECT_EQ(Unzip(ZipWriter().Add({"LINK", "new"})), 0);
    EXPECT_EQ(drive_.Read("OUTSIDE.TXT") + drive_.Read("OUT/LINK"), "minenew") << "the link, not what it names";
}

TEST_F(ZipLibraryTest, WhatIsDamagedNeverLands) {
    const ZipEntry good{"GOOD.TXT", "good"}, last{"LAST.TXT", "last"};
    const ZipEntry badSum{.name = "BAD.TXT", .data = "bad", .checkSumError = 1};
    const auto between = [&](const ZipEntry& bad) { return ZipWriter().Add(good).Add(bad).Add(last).Bytes(); };
    const std::string whole = ZipWriter().Add(good).Add(last).Bytes();
    const std::string both = "GOOD.TXT=good;LAST.TXT=last;";
    const std::tuple<const char*, std::string, std::int32_t, std::string> cases[] = {
        {"check sum", between(badSum), 3, both},
        {"two gigabytes", between({.name = "BAD.TXT", .data = "bad", .sizeError = 0x7FFFFFF0}), 3, both},
        {"a method that takes any memory", between({.name = "BAD.TXT", .data = "bad", .method = 14}), 81, both},
        {"broken packing", between({.name = "BAD.TXT", .data = std::string(8, '\xFF'), .method = 8}), 3, both},
        {"cut off", whole.substr(0, whole.size() - 30), 3, {}},
        {"an error page", "<html>PK\5\6</html>", 9, {}},
    };
    for (const auto& [what, bytes, code, landed] : cases) {
        EmptyOut();
        EXPECT_EQ(Unzip(bytes), code) << what;
        EXPECT_EQ(Out(), landed) << what;
    }
    drive_.Write("OUT/BAD.TXT", "old");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add(badSum)), 3);
    EXPECT_EQ(drive_.Read("OUT/BAD.TXT"), "old") << "a damaged member replaces nothing";
}

TEST_F(ZipLibraryTest, EveryDamagedByteIsSurvived) {
    const ZipEntry stamped{.name = "sub/A.TXT", .data = "good", .extendedTime = 1};
    const std::string whole = ZipWriter().Add(stamped).Add({"B.TXT", "good"}).Bytes();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\x7F', '\xFF'}) {
            if (whole[at] == byte) continue;
            EmptyOut();
            std::string bad = whole;
            bad[at] = byte;
            Unzip(bad);
            for (const auto& name : drive_.Names("OUT")) EXPECT_EQ(drive_.Read("OUT/" + name), "good") << at;
            EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "OUT")) << at;
        }
    }
}

#ifndef _WIN32
TEST_F(ZipLibraryTest, AFullDiskEndsTheExtraction) {
    const ZipEntry large{"LARGE.BIN", std::string(300'000, 'x')};
    drive_.Write("A.ZIP", ZipWriter().Add({"SMALL.TXT", "small"}).Add(large).Add({"LAST.TXT", "last"}).Bytes());
    drive_.Write("OUT/LARGE.BIN", "old");
    answers_ = {kOverwriteYes};
    const FileLimit limit(100'000);
    EXPECT_EQ(Unzip(), 50);
    EXPECT_EQ(Out(), "LARGE.BIN=old;SMALL.TXT=small;") << "no torn file, no temporary one";
}
#endif

TEST_F(ZipLibraryTest, PasswordsOpenMembersOrLeaveThemOut) {
    // The members one.txt and two.txt are encrypted with "right", plain.txt is not.
    const std::tuple<Names, std::size_t, std::int32_t> cases[] = {
        {{"right"}, 1, 0},
        {{}, 1, 82}, // skipped
        {{"wrong", "right"}, 2, 0},
        {{"a", "b", "c", "right"}, 3, 82},
    };
    for (const std::string encryption : {"zipcrypt", "aes256"}) {
        std::ifstream file(std::string(KLN_TEST_DATA "/zip/") + encryption + ".zip", std::ios::binary);
        const std::string archive(std::istreambuf_iterator<char>(file), {});
        for (const auto& [passwords, asked, code] : cases) {
            SCOPED_TRACE(testing::Message() << encryption << " " << testing::PrintToString(passwords));
            EmptyOut();
            passwords_ = passwords;
            EXPECT_EQ(Unzip(archive), code);
            EXPECT_EQ(asked_, Names(asked, "one.txt")) << "never for the second member";
            EXPECT_EQ(Out(), code == 0 ? "one.txt=hello;plain.txt=hello;two.txt=hello;" : "plain.txt=hello;");
        }
        passwords_ = {"right"};
        for (std::size_t at = 0; at < archive.find("two.txt"); ++at) {
            EmptyOut();
            std::string bad = archive;
            bad[at] = static_cast<char>(bad[at] ^ 1);
            Unzip(bad);
            for (const auto& name : drive_.Names("OUT")) EXPECT_EQ(drive_.Read("OUT/" + name), "hello") << at;
        }
    }
}

} // namespace
} // namespace korlan
