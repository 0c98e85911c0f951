// Archives with everything that a server, a tool or an attacker may put into them, on real files.
#include "platform/ZipLibrary.h"

#include "tests/support/TempFolder.h"
#include "tests/support/ZipWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <deque>

namespace korlan {
namespace {

using namespace test;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

class ZipLibraryTest : public testing::Test {
protected:
    ZipLibraryTest() {
        functions_.replace = [this](const std::string& member) {
            asked_.push_back(member);
            if (answers_.empty()) return kOverwriteNo;
            const std::int32_t answer = answers_.front();
            answers_.pop_front();
            return answer;
        };
        functions_.password = [this](std::string& password, std::size_t maxLength, const std::string& member) {
            EXPECT_EQ(maxLength, 256u);
            asked_.push_back(member);
            if (passwords_.empty()) return kPasswordSkip;
            password = passwords_.front();
            passwords_.pop_front();
            return kPasswordGiven;
        };
        functions_.print = [](std::string_view) { return 0; };
    }

    std::int32_t Unzip(const ZipWriter& archive) { return Unzip(archive.Bytes()); }
    std::int32_t Unzip(const std::string& bytes) {
        drive_.Write("A.ZIP", bytes);
        return Unzip();
    }
    std::int32_t Unzip(const Names& include = {}, const Names& exclude = {}) {
        DCL options;
        options.lpszZipFN = "C:\\A.ZIP";
        options.lpszExtractDir = folder_;
        asked_.clear();
        return Wiz_SingleEntryUnzip(static_cast<std::int32_t>(include.size()), include,
                                    static_cast<std::int32_t>(exclude.size()), exclude, options, functions_);
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
    std::string folder_ = "C:\\OUT";
    USERFUNCTIONS functions_;
    std::deque<std::int32_t> answers_;
    std::deque<std::string> passwords_;
    Names asked_; // the members of both kinds of question
};

std::string UnicodePath(const std::string& plain, const std::string& utf8) {
    const auto size = static_cast<std::uint32_t>(utf8.size() + 5);
    return ZipWriter::Short(0x7075) + ZipWriter::Short(size) + "\x01" + ZipWriter::Long(ZipWriter::CheckSum(plain)) +
           utf8;
}

TEST_F(ZipLibraryTest, MembersLandUnderTheirLastComponent) {
    constexpr std::uint32_t kUnix = 0x0314, kNtfsOld = 0x0B32, kNtfs = 0x0B14, kUtf8 = 0x800;
    const std::string longest(255, 'n');
    const auto lands = [&](const ZipEntry& entry, const std::string& landed) { // "" = refused
        SCOPED_TRACE(testing::PrintToString(entry.name));
        EmptyOut();
        EXPECT_EQ(Unzip(ZipWriter().Add(entry)), landed.empty() ? 1 : 0);
        EXPECT_EQ(drive_.Names("OUT"), landed.empty() ? Names{} : Names{landed});
        EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "OUT"));
    };
    const std::pair<std::string, std::string> plainNames[] = {
        {"sub/deep/A.DLL", "A.DLL"},           {"sub\\deep\\A.DLL", "A.DLL"},   {"../../up.txt", "up.txt"},
        {"/tmp/root.txt", "root.txt"},         {"C:\\WINDOWS\\a.txt", "a.txt"}, {longest, longest},
        {"\x81lwechsel.txt", "ülwechsel.txt"}, {"\x80\xFF.txt", "Ç\u00A0.txt"}, {"ülwechsel.txt", "ülwechsel.txt"},
    };
    for (const auto& [name, landed] : plainNames) lands({name, "x"}, landed);
    for (const auto& name :
         {""s, ".."s, "sub\\."s, "C:a.txt"s, "a.txt:stream"s, "a.txt\0.exe"s, "a\nb"s, longest + "n"})
        lands({name, "x"}, "");
    lands({.name = "\xFClwechsel.txt", .data = "x", .maker = kNtfs}, "ülwechsel.txt");
    lands({.name = "\x81lwechsel.txt", .data = "x", .maker = kNtfsOld}, "ülwechsel.txt");
    lands({.name = "\xFClwechsel.txt", .data = "x", .maker = kUnix}, "ülwechsel.txt");
    lands({.name = "дом/схема.txt", .data = "x", .maker = kUnix, .flags = kUtf8}, "схема.txt");
    lands({.name = "bad\xFF.txt", .data = "x", .maker = kUnix, .flags = kUtf8}, "badÿ.txt");
    lands({.name = "plain.txt", .data = "x", .directoryExtra = UnicodePath("plain.txt", "схема.txt")}, "схема.txt");
    lands({.name = "plain.txt", .data = "x", .directoryExtra = UnicodePath("other.txt", "схема.txt")}, "plain.txt");
}

TEST_F(ZipLibraryTest, OnlyFilesAreMadeOfMembers) {
    const auto unixEntry = [](const std::string& name, std::uint32_t mode) {
        return ZipEntry{.name = name, .data = "/etc/passwd", .maker = 0x0314, .attributes = mode << 16};
    };
    EXPECT_EQ(Unzip(ZipWriter()
                        .Add({"folder/", ""})
                        .Add({"win\\", ""})
                        .Add({.name = "marked", .data = "", .attributes = 0x10})
                        .Add(unixEntry("tool", 0100755))
                        .Add(unixEntry("text", 0100644))),
              0);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("text", "tool"));
    EXPECT_EQ(access(drive_.HostPathOf("OUT/tool").c_str(), X_OK), 0) << "a program stays one";
    EXPECT_NE(access(drive_.HostPathOf("OUT/text").c_str(), X_OK), 0);
    for (const std::uint32_t type : {0120777u, 0020666u, 0060666u, 0010666u}) { // links, devices, pipes
        EmptyOut();
        EXPECT_EQ(Unzip(ZipWriter().Add(unixEntry("link", type)).Add({"after", "x"})), 1) << type;
        EXPECT_THAT(drive_.Names("OUT"), ElementsAre("after")) << type;
    }
}

TEST_F(ZipLibraryTest, MembersKeepTheirOwnTime) {
    constexpr const char *kWest = "EST5EDT,M3.2.0,M11.1.0", *kEast = "CET-1CEST,M3.5.0,M10.5.0/3";
    const std::tuple<const char*, std::uint32_t, std::uint32_t, std::optional<std::int32_t>, std::int64_t> cases[] = {
        // 1736942400 is 2025-01-15 12:00 UTC, 1752580800 is 2025-07-15 12:00 UTC.
        {kWest, DosDate(2025, 1, 15), DosTime(12, 0, 0), {}, 1736942400 + 5 * 3600},
        {kWest, DosDate(2025, 7, 15), DosTime(12, 0, 0), {}, 1752580800 + 4 * 3600},
        {kEast, DosDate(2025, 7, 15), DosTime(12, 0, 58), {}, 1752580800 + 58 - 2 * 3600},
        // 2025-03-30: 02:00 to 03:00 do not exist. 1743296400 is 01:00 UTC, the change.
        {kEast, DosDate(2025, 3, 30), DosTime(1, 59, 58), {}, 1743296400 - 2},
        {kEast, DosDate(2025, 3, 30), DosTime(2, 30, 0), {}, 1743296400 + 1800},
        {kEast, DosDate(2025, 3, 30), DosTime(3, 0, 0), {}, 1743296400},
        // 2025-10-26: 02:00 to 03:00 come twice. 1761440400 is 01:00 UTC, the change; the first is taken.
        {kEast, DosDate(2025, 10, 26), DosTime(2, 30, 0), {}, 1761440400 - 1800},
        {kEast, DosDate(2025, 10, 26), DosTime(3, 0, 0), {}, 1761440400 + 3600},
        // An extended stamp holds in every zone, before 1970 as well.
        {kEast, DosDate(2025, 10, 26), DosTime(2, 30, 0), 1761440400 + 1801, 1761440400 + 1801},
        {kWest, DosDate(1980, 1, 1), DosTime(0, 0, 0), -86399, -86399},
    };
    for (int pass = 0; pass < 2; ++pass) { // what was asked before must not matter
        for (const auto& [zone, date, time, extended, seconds] : cases) {
            const ScopedVariable variable("TZ", zone);
            tzset();
            EmptyOut();
            const ZipEntry entry{.name = "A.TXT", .data = "x", .date = date, .time = time, .extendedTime = extended};
            EXPECT_EQ(Unzip(ZipWriter().Add(entry)), 0);
            struct stat status {};
            EXPECT_EQ(stat(drive_.HostPathOf("OUT/A.TXT").c_str(), &status), 0);
            EXPECT_EQ(status.st_mtim.tv_sec, seconds) << zone << " " << date << " " << time << " pass " << pass;
        }
    }
    tzset();
}

TEST_F(ZipLibraryTest, AsksBeforeItReplaces) {
    const auto archive = ZipWriter().Add({"x/A.TXT", "new"}).Add({"b.txt", "new"}).Add({"C.TXT", "new"});
    const Names members{"x/A.TXT", "b.txt", "C.TXT"}, firstTwo{"x/A.TXT", "b.txt"};
    const std::tuple<std::deque<std::int32_t>, Names, std::string> cases[] = {
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

TEST_F(ZipLibraryTest, WhichFileAMemberReplaces) {
    EXPECT_EQ(Unzip(ZipWriter().Add({"x/A.TXT", "first"}).Add({"y/a.txt", "second"})), 0);
    EXPECT_THAT(asked_, ElementsAre("y/a.txt")) << "the second member of a name";
    drive_.Write("OUT/a.txt", "lower");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add({"a.txt", "new"})), 0);
    EXPECT_EQ(Out(), "A.TXT=first;a.txt=new;") << "the exact spelling goes first";

    EmptyOut();
    drive_.Write("OUTSIDE.TXT", "mine");
    std::filesystem::create_symlink(drive_.HostPathOf("OUTSIDE.TXT"), drive_.HostPathOf("OUT/LINK"));
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add({"LINK", "new"})), 0);
    EXPECT_EQ(drive_.Read("OUTSIDE.TXT") + Out(), "mineLINK=new;") << "the link, not what it names";
    drive_.MakeFolders("OUT/FOLDER");
    EXPECT_EQ(Unzip(ZipWriter().Add({"folder", "x"})), 1);
    EXPECT_THAT(asked_, IsEmpty()) << "a folder is never replaced";
}

std::string Changed(std::string bytes, std::size_t at, char byte) {
    bytes.at(at) = byte;
    return bytes;
}

TEST_F(ZipLibraryTest, WhatIsDamagedNeverLands) {
    const ZipEntry good{"GOOD.TXT", "good"}, last{"LAST.TXT", "last"};
    const ZipEntry badSum{.name = "BAD.TXT", .data = "bad", .checkSumError = 1};
    const auto between = [&](const ZipEntry& bad) { return ZipWriter().Add(good).Add(bad).Add(last).Bytes(); };
    const std::string whole = ZipWriter().Add(good).Add(last).Bytes();
    const std::size_t lastHeader = 30 + 8 + 4;
    const std::string first = "GOOD.TXT=good;", both = first + "LAST.TXT=last;";
    const std::tuple<const char*, std::string, std::int32_t, std::string> cases[] = {
        {"something before it", std::string(5000, 'M') + whole, 0, both},
        {"a comment behind it", Changed(whole, whole.size() - 2, 3) + "abc", 0, both},
        {"check sum", between(badSum), 3, both},
        {"too short", between({.name = "BAD.TXT", .data = "bad", .sizeError = 0xFFFFFFFF}), 3, both},
        {"two gigabytes", between({.name = "BAD.TXT", .data = "bad", .sizeError = 0x7FFFFFF0}), 3, both},
        {"unknown method", between({.name = "BAD.TXT", .data = "bad", .method = 97}), 81, both},
        {"broken packing", between({.name = "BAD.TXT", .data = std::string(8, '\xFF'), .method = 8}), 3, both},
        {"local header", Changed(whole, lastHeader, 'X'), 3, first},
        {"cut off", whole.substr(0, whole.size() - 30), 3, {}},
        {"an error page", "<html>PK\5\6</html>", 9, {}},
        {"empty file", "", 9, {}},
        {"no members", ZipWriter().Bytes(), 1, {}},
    };
    for (const auto& [what, bytes, code, landed] : cases) {
        EmptyOut();
        EXPECT_EQ(Unzip(bytes), code) << what;
        EXPECT_EQ(Out(), landed) << what;
        EXPECT_TRUE(asked_.empty()) << what << ": a member had two turns";
    }
    drive_.Write("OUT/BAD.TXT", "old");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add(badSum)), 3);
    EXPECT_EQ(drive_.Read("OUT/BAD.TXT"), "old") << "a damaged member replaces nothing";
}

TEST_F(ZipLibraryTest, EveryDamagedByteIsSurvived) {
    const std::string whole = ZipWriter()
                                  .Add({.name = "sub/A.TXT", .data = "good", .extendedTime = 1})
                                  .Add({.name = "B.TXT", .data = "good", .directoryExtra = UnicodePath("B.TXT", "Ö")})
                                  .Bytes();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\x7F', '\xFF'}) {
            if (whole[at] == byte) continue;
            EmptyOut();
            Unzip(Changed(whole, at, byte));
            for (const auto& name : drive_.Names("OUT")) EXPECT_EQ(drive_.Read("OUT/" + name), "good") << at;
            EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "OUT")) << at;
        }
    }
}

TEST_F(ZipLibraryTest, AFullDiskEndsTheExtraction) {
    drive_.Write("A.ZIP", ZipWriter()
                              .Add({"SMALL.TXT", "small"})
                              .Add({"LARGE.BIN", std::string(300'000, 'x')})
                              .Add({"LAST.TXT", "last"})
                              .Bytes());
    drive_.Write("OUT/LARGE.BIN", "old");
    answers_ = {kOverwriteYes};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{100'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_EQ(Unzip(), 50);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(Out(), "LARGE.BIN=old;SMALL.TXT=small;") << "no torn file, no temporary one";
}

TEST_F(ZipLibraryTest, MakesTheFolderThatIsMissing) {
    drive_.Write("FILE", "x");
    EmptyOut();
    const auto archive = ZipWriter().Add({"A.TXT", "x"});
    for (const char* folder : {"C:\\NEW\\DEEP\\", "C:\\OUT\\..\\OUT"}) {
        folder_ = folder;
        EXPECT_EQ(Unzip(archive), 0) << folder;
    }
    EXPECT_TRUE(drive_.Exists("NEW/DEEP/A.TXT") && drive_.Exists("OUT/A.TXT"));
    for (const char* folder : {"C:\\OUT\\..\\NO", "C:\\FILE", "Q:\\OUT"}) {
        folder_ = folder;
        EXPECT_EQ(Unzip(archive), 50) << folder;
    }
    EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "FILE", "NEW", "OUT"));
    std::filesystem::remove(drive_.HostPathOf("A.ZIP"));
    EXPECT_EQ(Unzip(), 9);
}

// The members one.txt and two.txt are encrypted with the password "right", then plain.txt, which is not.
std::string EncryptedArchive(const std::string& encryption) {
    std::ifstream file(KLN_TEST_DATA "/zip/" + encryption + ".zip", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ZipLibraryTest, PasswordsOpenMembersOrLeaveThemOut) {
    const std::tuple<std::deque<std::string>, std::size_t, std::int32_t> cases[] = {// then the user skips
                                                                                    {{"right"}, 1, 0},
                                                                                    {{}, 1, 82},
                                                                                    {{"wrong", "right"}, 2, 0},
                                                                                    {{"a", "b", "c", "right"}, 3, 82}};
    for (const char* encryption : {"zipcrypt", "aes256"}) {
        for (const auto& [passwords, asked, code] : cases) {
            SCOPED_TRACE(testing::Message() << encryption << " " << testing::PrintToString(passwords));
            EmptyOut();
            passwords_ = passwords;
            EXPECT_EQ(Unzip(EncryptedArchive(encryption)), code);
            EXPECT_EQ(asked_, Names(asked, "one.txt")) << "never for the second member";
            EXPECT_EQ(Out(), code == 0 ? "one.txt=hello;plain.txt=hello;two.txt=hello;" : "plain.txt=hello;");
        }
    }
}

// One wrong password in 256 passes the old encryption's own check: the member's check sum has to tell.
TEST_F(ZipLibraryTest, APasswordThatOnlySeemsRightBringsNothing) {
    const std::string archive = EncryptedArchive("zipcrypt");
    for (int i = 0; i < 1500; i += 3) {
        EmptyOut();
        passwords_ = {"w" + std::to_string(i), "w" + std::to_string(i + 1), "w" + std::to_string(i + 2)};
        ASSERT_EQ(Unzip(archive), 82) << i;
        ASSERT_EQ(Out(), "plain.txt=hello;") << i;
    }
}

TEST_F(ZipLibraryTest, NameListsStopsAndThrownErrors) {
    const auto archive = ZipWriter().Add({"s/A.TXT", "abc"}).Add({"B.TXT", "de"}).Add({"C.TXT", "f"});
    drive_.Write("A.ZIP", archive.Bytes());
    EXPECT_EQ(Unzip({"s/A.TXT", "C.TXT"}, {"C.TXT"}), 0);
    EXPECT_EQ(Out(), "A.TXT=abc;");
    functions_.service = [](const std::string& member, std::uint64_t size) { return member == "B.TXT" && size == 2; };
    EXPECT_EQ(Unzip(archive), 80);
    EXPECT_EQ(Out(), "A.TXT=abc;B.TXT=de;");

    struct Ended {};
    functions_.password = [](std::string&, std::size_t, const std::string&) -> std::int32_t { throw Ended{}; };
    EXPECT_THROW(Unzip(EncryptedArchive("zipcrypt")), Ended);
    EXPECT_EQ(Out(), "A.TXT=abc;B.TXT=de;");
}

} // namespace
} // namespace korlan
