// Archives with everything that a server, a tool or an attacker may put into them, on real files.
#include "platform/ZipLibrary.h"

#include "platform/RuntimeError.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ZipWriter.h"

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <deque>

namespace korlan {
namespace {

using test::DosDate;
using test::DosTime;
using test::ScopedVariable;
using test::TempDrive;
using test::ZipEntry;
using test::ZipWriter;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Names = std::vector<std::string>;

class ZipLibraryTest : public testing::Test {
protected:
    ZipLibraryTest() {
        functions_.replace = [this](const std::string& member) {
            asked_.push_back(member);
            const std::int32_t answer = answers_.empty() ? kOverwriteNo : answers_.front();
            if (!answers_.empty()) answers_.pop_front();
            return answer;
        };
        functions_.password = [this](std::string& password, std::size_t maxLength, const std::string& member) {
            EXPECT_EQ(maxLength, 256u);
            passwordAsked_.push_back(member);
            if (passwords_.empty()) return kPasswordSkip;
            password = passwords_.front();
            passwords_.pop_front();
            return kPasswordGiven;
        };
        functions_.print = [this](std::string_view text) {
            printed_ += text;
            return 0;
        };
        drive_.MakeFolders("OUT");
    }

    std::int32_t Unzip(const std::string& bytes) {
        drive_.Write("A.ZIP", bytes);
        return Unzip();
    }
    std::int32_t Unzip(const Names& include = {}, const Names& exclude = {}) {
        DCL options;
        options.lpszZipFN = "C:\\A.ZIP";
        options.lpszExtractDir = folder_;
        asked_.clear(), passwordAsked_.clear(), printed_.clear();
        return Wiz_SingleEntryUnzip(static_cast<std::int32_t>(include.size()), include,
                                    static_cast<std::int32_t>(exclude.size()), exclude, options, functions_);
    }

    std::int64_t TimeOf(const std::string& path) const {
        struct stat status {};
        return stat(drive_.HostPathOf(path).c_str(), &status) == 0 ? status.st_mtim.tv_sec : -1;
    }

    TempDrive drive_;
    std::string folder_ = "C:\\OUT";
    USERFUNCTIONS functions_;
    std::deque<std::int32_t> answers_;
    std::deque<std::string> passwords_;
    Names asked_, passwordAsked_;
    std::string printed_;
};

std::string UnicodePath(const std::string& plain, const std::string& utf8) {
    const auto size = static_cast<std::uint32_t>(utf8.size() + 5);
    return ZipWriter::Short(0x7075) + ZipWriter::Short(size) + "\x01" + ZipWriter::Long(ZipWriter::CheckSum(plain)) +
           utf8;
}

// --- Names -----------------------------------------------------------------------------------------------------------

TEST_F(ZipLibraryTest, MembersLandUnderTheirLastComponent) {
    constexpr std::uint32_t kDos = 20, kUnix = 0x0314, kNtfsOld = 0x0B32, kNtfs = 0x0B14, kUtf8 = 0x800;
    const struct {
        std::string name;
        std::uint32_t maker, flags;
        std::string landed; // "" = refused
        std::string extra = {};
    } cases[] = {
        {"PARTS.DLL", kDos, 0, "PARTS.DLL"},
        {"sub/deep/PARTS.DLL", kDos, 0, "PARTS.DLL"},
        {"sub\\deep\\PARTS.DLL", kDos, 0, "PARTS.DLL"},
        {"../../up.txt", kDos, 0, "up.txt"},
        {"..\\up.txt", kDos, 0, "up.txt"},
        {"/tmp/absolute.txt", kDos, 0, "absolute.txt"},
        {"C:\\WINDOWS\\a.txt", kDos, 0, "a.txt"},
        {"//server/share/a.txt", kDos, 0, "a.txt"},
        {"./a.txt", kDos, 0, "a.txt"},
        {"two words .txt", kDos, 0, "two words .txt"},
        {std::string(255, 'n'), kDos, 0, std::string(255, 'n')},
        {"..", kDos, 0, ""},
        {"sub/..", kDos, 0, ""},
        {"sub\\.", kDos, 0, ""},
        {"", kDos, 0, ""},
        {"C:a.txt", kDos, 0, ""},
        {"a.txt:stream", kDos, 0, ""},
        {std::string("a.txt\0.exe", 10), kDos, 0, ""},
        {"line\nbreak", kDos, 0, ""},
        {std::string(256, 'n'), kDos, 0, ""},
        {"\x81lwechsel.txt", kDos, 0, "ülwechsel.txt"},
        {"\xFClwechsel.txt", kNtfs, 0, "ülwechsel.txt"},
        {"\x81lwechsel.txt", kNtfsOld, 0, "ülwechsel.txt"},
        {"\xFClwechsel.txt", kUnix, 0, "ülwechsel.txt"},
        {"\x80\xFF.txt", kDos, 0, "Ç\u00A0.txt"},
        {"ülwechsel.txt", kDos, 0, "ülwechsel.txt"},
        {"дом/схема.txt", kUnix, kUtf8, "схема.txt"},
        {"bad\xFF.txt", kUnix, kUtf8, "badÿ.txt"},
        {"plain.txt", kDos, 0, "схема.txt", UnicodePath("plain.txt", "схема.txt")},
        {"plain.txt", kDos, 0, "plain.txt", UnicodePath("other.txt", "схема.txt")},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.name));
        const TempDrive fresh; // its own C:
        const auto before = drive_.Names();
        fresh.Write("A.ZIP", ZipWriter()
                                 .Add({.name = row.name,
                                       .data = "x",
                                       .maker = row.maker,
                                       .flags = row.flags,
                                       .directoryExtra = row.extra})
                                 .Bytes());
        EXPECT_EQ(Unzip(), row.landed.empty() ? 1 : 0) << printed_;
        EXPECT_EQ(fresh.Names("OUT"), row.landed.empty() ? Names{} : Names{row.landed});
        EXPECT_EQ(fresh.Names(), (Names{"A.ZIP", "OUT"}));
        EXPECT_EQ(drive_.Names(), before);
    }
}

TEST_F(ZipLibraryTest, OnlyFilesAreMadeOfMembers) {
    constexpr std::uint32_t kUnix = 0x0314;
    EXPECT_EQ(Unzip(ZipWriter()
                        .Add({.name = "folder/", .data = ""})
                        .Add({.name = "win\\", .data = ""})
                        .Add({.name = "marked", .data = "", .attributes = 0x10})
                        .Add({.name = "tool", .data = "run", .maker = kUnix, .attributes = 0100755u << 16})
                        .Add({.name = "text", .data = "read", .maker = kUnix, .attributes = 0100644u << 16})
                        .Bytes()),
              0);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("text", "tool"));
    EXPECT_EQ(access(drive_.HostPathOf("OUT/tool").c_str(), X_OK), 0) << "a program stays one";
    struct stat status {};
    ASSERT_EQ(stat(drive_.HostPathOf("OUT/text").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0111, 0u);

    for (const std::uint32_t type : {0120777u, 0020666u, 0060666u, 0010666u}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(Unzip(ZipWriter()
                            .Add({.name = "link", .data = "/etc/passwd", .maker = kUnix, .attributes = type << 16})
                            .Add({.name = "after" + std::to_string(type), .data = "x"})
                            .Bytes()),
                  1);
        EXPECT_FALSE(drive_.Exists("OUT/link"));
        EXPECT_TRUE(drive_.Exists("OUT/after" + std::to_string(type)));
    }
}

// --- Times -----------------------------------------------------------------------------------------------------------

TEST_F(ZipLibraryTest, MembersKeepTheirOwnTime) {
    constexpr const char *kWest = "EST5EDT,M3.2.0,M11.1.0", *kEast = "CET-1CEST,M3.5.0,M10.5.0/3", *kIndia = "IST-5:30";
    const struct {
        const char* zone;
        std::uint32_t date, time;
        std::optional<std::int32_t> extended;
        std::int64_t seconds;
    } cases[] = {
        // 1736942400 is 2025-01-15 12:00 UTC, 1752580800 is 2025-07-15 12:00 UTC.
        {"UTC0", DosDate(2025, 1, 15), DosTime(12, 0, 0), {}, 1736942400},
        {kWest, DosDate(2025, 1, 15), DosTime(12, 0, 0), {}, 1736942400 + 5 * 3600},
        {kWest, DosDate(2025, 7, 15), DosTime(12, 0, 0), {}, 1752580800 + 4 * 3600},
        {kEast, DosDate(2025, 1, 15), DosTime(12, 0, 0), {}, 1736942400 - 3600},
        {kEast, DosDate(2025, 7, 15), DosTime(12, 0, 58), {}, 1752580800 + 58 - 2 * 3600},
        {kIndia, DosDate(2025, 7, 15), DosTime(12, 0, 0), {}, 1752580800 - 19800},
        // 2025-03-30: 02:00 to 03:00 do not exist. 1743296400 is 01:00 UTC, the change.
        {kEast, DosDate(2025, 3, 30), DosTime(1, 59, 58), {}, 1743296400 - 2},
        {kEast, DosDate(2025, 3, 30), DosTime(2, 30, 0), {}, 1743296400 + 1800},
        {kEast, DosDate(2025, 3, 30), DosTime(3, 0, 0), {}, 1743296400},
        // 2025-10-26: 02:00 to 03:00 come twice. 1761440400 is 01:00 UTC, the change; the first is taken.
        {kEast, DosDate(2025, 10, 26), DosTime(1, 59, 58), {}, 1761440400 - 3600 - 2},
        {kEast, DosDate(2025, 10, 26), DosTime(2, 30, 0), {}, 1761440400 - 1800},
        {kEast, DosDate(2025, 10, 26), DosTime(3, 0, 0), {}, 1761440400 + 3600},
        // 2025-11-02 01:30 comes twice in the west; 1762063200 is 06:00 UTC, the change.
        {kWest, DosDate(2025, 11, 2), DosTime(1, 30, 0), {}, 1762063200 - 1800},
        {kWest, DosDate(2025, 3, 9), DosTime(2, 30, 0), {}, 1741503600 + 1800},
        // An extended stamp holds in every zone, before 1970 as well.
        {kWest, DosDate(2025, 1, 15), DosTime(12, 0, 0), 1736942401, 1736942401},
        {kEast, DosDate(2025, 10, 26), DosTime(2, 30, 0), 1761440400 + 1801, 1761440400 + 1801},
        {kEast, DosDate(1980, 1, 1), DosTime(0, 0, 0), -86399, -86399},
    };
    for (int pass = 0; pass < 2; ++pass) { // what was asked before must not matter
        for (const auto& row : cases) {
            SCOPED_TRACE(testing::Message() << row.zone << " " << row.date << " " << row.time << " pass " << pass);
            const ScopedVariable zone("TZ", row.zone);
            tzset();
            answers_ = {kOverwriteYes};
            EXPECT_EQ(Unzip(ZipWriter()
                                .Add({.name = "A.TXT",
                                      .data = "x",
                                      .date = row.date,
                                      .time = row.time,
                                      .extendedTime = row.extended})
                                .Bytes()),
                      0);
            EXPECT_EQ(TimeOf("OUT/A.TXT"), row.seconds);
        }
    }
    tzset();
}

// --- Files that are there --------------------------------------------------------------------------------------------

TEST_F(ZipLibraryTest, AsksBeforeItReplaces) {
    const std::string archive =
        ZipWriter().Add({"x/A.TXT", "new"}).Add({"b.txt", "new"}).Add({"C.TXT", "new"}).Add({"D.TXT", "new"}).Bytes();
    const struct {
        std::deque<std::int32_t> answers;
        std::vector<std::string> asked, contents; // of A.TXT, B.TXT, C.TXT; D.TXT is new
    } cases[] = {
        {{kOverwriteNo, kOverwriteNo, kOverwriteNo}, {"x/A.TXT", "b.txt", "C.TXT"}, {"old", "old", "old"}},
        {{kOverwriteYes, kOverwriteNo, kOverwriteYes}, {"x/A.TXT", "b.txt", "C.TXT"}, {"new", "old", "new"}},
        {{kOverwriteNo, kOverwriteAll}, {"x/A.TXT", "b.txt"}, {"old", "new", "new"}},
        {{kOverwriteYes, kOverwriteNone}, {"x/A.TXT", "b.txt"}, {"new", "old", "old"}},
        {{kOverwriteNone}, {"x/A.TXT"}, {"old", "old", "old"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.answers));
        std::filesystem::remove_all(drive_.HostPathOf("OUT"));
        for (const char* name : {"OUT/A.TXT", "OUT/B.TXT", "OUT/C.TXT"}) drive_.Write(name, "old");
        drive_.SetMode("OUT/C.TXT", 0444);
        answers_ = row.answers;
        EXPECT_EQ(Unzip(archive), 0);
        EXPECT_EQ(asked_, row.asked);
        EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT", "B.TXT", "C.TXT", "D.TXT")) << "one file, one name";
        EXPECT_EQ(Names({drive_.Read("OUT/A.TXT"), drive_.Read("OUT/B.TXT"), drive_.Read("OUT/C.TXT")}), row.contents);
        EXPECT_EQ(drive_.Read("OUT/D.TXT"), "new");
    }
}

TEST_F(ZipLibraryTest, AsksForTheSecondMemberOfAName) {
    EXPECT_EQ(Unzip(ZipWriter().Add({"x/A.TXT", "first"}).Add({"y/a.txt", "second"}).Bytes()), 0);
    EXPECT_THAT(asked_, ElementsAre("y/a.txt"));
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT"));
    EXPECT_EQ(drive_.Read("OUT/A.TXT"), "first");
}

TEST_F(ZipLibraryTest, AnExactSpellingGoesBeforeAnother) {
    drive_.Write("OUT/A.TXT", "upper");
    drive_.Write("OUT/a.txt", "lower");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add({"a.txt", "new"}).Bytes()), 0);
    EXPECT_EQ(drive_.Read("OUT/A.TXT"), "upper");
    EXPECT_EQ(drive_.Read("OUT/a.txt"), "new");
}

TEST_F(ZipLibraryTest, ReplacesALinkAndNotWhatItNames) {
    drive_.Write("OUTSIDE.TXT", "mine");
    std::filesystem::create_symlink(drive_.HostPathOf("OUTSIDE.TXT"), drive_.HostPathOf("OUT/A.TXT"));
    drive_.MakeFolders("OUT/FOLDER");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add({"A.TXT", "new"}).Add({"folder", "x"}).Bytes()), 1);
    EXPECT_THAT(asked_, ElementsAre("A.TXT"));
    EXPECT_EQ(drive_.Read("OUTSIDE.TXT"), "mine");
    EXPECT_EQ(drive_.Read("OUT/A.TXT"), "new");
}

// --- Archives and disks that are not well ----------------------------------------------------------------------------

std::string Changed(std::string bytes, std::size_t at, char byte) {
    bytes.at(at) = byte;
    return bytes;
}

TEST_F(ZipLibraryTest, WhatIsDamagedNeverLands) {
    const ZipEntry good{"GOOD.TXT", "good"}, last{"LAST.TXT", "last"};
    ZipEntry badSum{"BAD.TXT", "bad"}, tooShort = badSum, tooLong = badSum, unknown = badSum, noDeflate = badSum;
    badSum.checkSumError = 1;
    tooShort.sizeError = 0xFFFFFFFF;
    tooLong.sizeError = 0x7FFFFFF0; // two gigabytes are announced
    unknown.method = 97;
    noDeflate.method = 8;
    noDeflate.data = "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF";
    const std::string whole = ZipWriter().Add(good).Add(last).Bytes();
    const std::size_t lastHeader = 30 + 8 + 4;
    const Names both{"GOOD.TXT", "LAST.TXT"};
    const struct {
        const char* what;
        std::string bytes;
        std::int32_t code;
        Names landed;
    } cases[] = {
        {"whole", whole, 0, both},
        {"something before it", std::string(5000, 'M') + whole, 0, both},
        {"a comment behind it", Changed(whole, whole.size() - 2, 3) + "abc", 0, both},
        {"check sum", ZipWriter().Add(good).Add(badSum).Add(last).Bytes(), 3, both},
        {"too short", ZipWriter().Add(good).Add(tooShort).Add(last).Bytes(), 3, both},
        {"too long", ZipWriter().Add(good).Add(tooLong).Add(last).Bytes(), 3, both},
        {"unknown method", ZipWriter().Add(good).Add(unknown).Add(last).Bytes(), 81, both},
        {"broken packing", ZipWriter().Add(good).Add(noDeflate).Add(last).Bytes(), 3, both},
        {"local header", Changed(whole, lastHeader, 'X'), 3, {"GOOD.TXT"}},
        {"cut off", whole.substr(0, whole.size() - 30), 3, {}},
        {"cut off early", whole.substr(0, 20), 3, {}},
        {"an error page", "<html>PK\5\6</html>", 9, {}},
        {"empty file", "", 9, {}},
        {"no members", ZipWriter().Bytes(), 1, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        std::filesystem::remove_all(drive_.HostPathOf("OUT"));
        drive_.MakeFolders("OUT");
        EXPECT_EQ(Unzip(row.bytes), row.code) << printed_;
        EXPECT_EQ(drive_.Names("OUT"), row.landed);
        EXPECT_THAT(asked_, IsEmpty()) << "a member had two turns";
    }
    drive_.Write("OUT/BAD.TXT", "old");
    answers_ = {kOverwriteYes};
    EXPECT_EQ(Unzip(ZipWriter().Add(badSum).Bytes()), 3);
    EXPECT_EQ(drive_.Read("OUT/BAD.TXT"), "old") << "a damaged member replaces nothing";
}

TEST_F(ZipLibraryTest, EveryDamagedByteIsSurvived) {
    const std::string whole = ZipWriter()
                                  .Add({.name = "sub/A.TXT", .data = "aaaa", .extendedTime = 1})
                                  .Add({.name = "B.TXT", .data = "bbbb", .directoryExtra = UnicodePath("B.TXT", "Ö")})
                                  .Bytes();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\x7F', '\xFF'}) {
            if (whole[at] == byte) continue;
            std::filesystem::remove_all(drive_.HostPathOf("OUT"));
            drive_.MakeFolders("OUT");
            Unzip(Changed(whole, at, byte));
            for (const std::string& name : drive_.Names("OUT")) {
                const std::string data = drive_.Read("OUT/" + name);
                EXPECT_TRUE(data == "aaaa" || data == "bbbb") << "byte " << at << ": " << name << " holds " << data;
            }
            EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "OUT")) << "byte " << at;
        }
    }
}

TEST_F(ZipLibraryTest, AFullDiskEndsTheExtraction) {
    const std::string archive = ZipWriter()
                                    .Add({"SMALL.TXT", "small"})
                                    .Add({"LARGE.BIN", std::string(300'000, 'x')})
                                    .Add({"LAST.TXT", "last"})
                                    .Bytes();
    drive_.Write("A.ZIP", archive);
    drive_.Write("OUT/LARGE.BIN", "old");
    answers_ = {kOverwriteYes};
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::int32_t code = Unzip();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(code, 50);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("LARGE.BIN", "SMALL.TXT")) << "no torn file, no temporary one";
    EXPECT_EQ(drive_.Read("OUT/LARGE.BIN"), "old");
}

TEST_F(ZipLibraryTest, MakesTheFolderThatIsMissing) {
    const std::string archive = ZipWriter().Add({"A.TXT", "x"}).Bytes();
    drive_.Write("FILE", "x");
    const struct {
        const char *folder, *landed;
        std::int32_t code;
    } cases[] = {
        {"C:\\NEW\\DEEP\\", "NEW/DEEP/A.TXT", 0}, {"c:\\out", "OUT/A.TXT", 0},    {"C:\\OUT\\..\\OUT", "OUT/A.TXT", 0},
        {"C:\\OUT\\..\\NO", "NO/A.TXT", 50},      {"C:\\FILE", "FILE/A.TXT", 50}, {"Q:\\OUT", "Q/A.TXT", 50},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.folder);
        std::filesystem::remove(drive_.HostPathOf("OUT/A.TXT"));
        folder_ = row.folder;
        EXPECT_EQ(Unzip(archive), row.code);
        EXPECT_EQ(drive_.Exists(row.landed), row.code == 0);
    }
    EXPECT_THAT(drive_.Names(), ElementsAre("A.ZIP", "FILE", "NEW", "OUT"));
    std::filesystem::remove(drive_.HostPathOf("A.ZIP"));
    EXPECT_EQ(Unzip(), 9);
}

// --- Passwords -------------------------------------------------------------------------------------------------------

// An archive whose members one.txt and two.txt are encrypted, then plain.txt, which is not.
std::string EncryptedArchive(const char* encryption, const char* password) {
    std::string bytes(100'000, '\0');
    std::size_t used = 0;
    archive* writer = archive_write_new();
    archive_write_set_format_zip(writer);
    archive_write_set_format_option(writer, "zip", "encryption", encryption);
    archive_write_set_passphrase(writer, password);
    archive_write_open_memory(writer, bytes.data(), bytes.size(), &used);
    for (const char* name : {"one.txt", "two.txt"}) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, name);
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_entry_set_size(entry, 5);
        EXPECT_EQ(archive_write_header(writer, entry), ARCHIVE_OK) << archive_error_string(writer);
        EXPECT_EQ(archive_write_data(writer, "hello", 5), 5);
        archive_entry_free(entry);
    }
    EXPECT_EQ(archive_write_close(writer), ARCHIVE_OK);
    archive_write_free(writer);
    bytes.resize(used);
    return ZipWriter(bytes).Add({"plain.txt", "hello"}).Bytes();
}

TEST_F(ZipLibraryTest, PasswordsOpenMembersOrLeaveThemOut) {
    const struct {
        std::deque<std::string> passwords; // then the user skips
        Names asked, landed;
        std::int32_t code;
    } cases[] = {
        {{"right"}, {"one.txt"}, {"one.txt", "plain.txt", "two.txt"}, 0},
        {{}, {"one.txt"}, {"plain.txt"}, 82},
        {{"wrong"}, {"one.txt", "one.txt"}, {"plain.txt"}, 82},
        {{"wrong", "right"}, {"one.txt", "one.txt"}, {"one.txt", "plain.txt", "two.txt"}, 0},
        {{"a", "b", "c", "right"}, {"one.txt", "one.txt", "one.txt"}, {"plain.txt"}, 82},
    };
    for (const char* encryption : {"zipcrypt", "aes256"}) {
        for (const auto& row : cases) {
            SCOPED_TRACE(testing::Message() << encryption << " " << testing::PrintToString(row.passwords));
            std::int32_t code = 0;
            // In one archive of 256 a wrong password passes the old encryption's own check; not in several in a row.
            for (int archive = 0; archive == 0 || (archive < 5 && passwordAsked_ != row.asked); ++archive) {
                std::filesystem::remove_all(drive_.HostPathOf("OUT"));
                passwords_ = row.passwords;
                code = Unzip(EncryptedArchive(encryption, "right"));
            }
            EXPECT_EQ(code, row.code) << printed_;
            EXPECT_EQ(passwordAsked_, row.asked);
            EXPECT_EQ(drive_.Names("OUT"), row.landed);
            for (const std::string& name : row.landed) EXPECT_EQ(drive_.Read("OUT/" + name), "hello");
        }
    }
}

// One wrong password in 256 passes the old encryption's own check: the member's check sum has to tell.
TEST_F(ZipLibraryTest, APasswordThatOnlySeemsRightBringsNothing) {
    const std::string archive = EncryptedArchive("zipcrypt", "right");
    for (int i = 0; i < 1500; i += 3) {
        std::filesystem::remove_all(drive_.HostPathOf("OUT"));
        passwords_ = {"w" + std::to_string(i), "w" + std::to_string(i + 1), "w" + std::to_string(i + 2)};
        ASSERT_EQ(Unzip(archive), 82) << i << printed_;
        ASSERT_THAT(drive_.Names("OUT"), ElementsAre("plain.txt")) << i;
    }
}

// --- The call itself -------------------------------------------------------------------------------------------------

TEST_F(ZipLibraryTest, CallbacksListStopAndThrow) {
    const std::string archive = ZipWriter().Add({"s/A.TXT", "abc"}).Add({"B.TXT", "de"}).Add({"C.TXT", "f"}).Bytes();
    std::vector<ListedMember> listed;
    functions_.message = [&](const ListedMember& member) { listed.push_back(member); };
    functions_.service = [](const std::string& member, std::uint64_t size) { return member == "B.TXT" && size == 2; };
    EXPECT_EQ(Unzip(archive), 80);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT", "B.TXT"));
    ASSERT_EQ(listed.size(), 2u);
    const ListedMember& first = listed[0];
    EXPECT_EQ(first.name, "s/A.TXT");
    EXPECT_EQ(first.size, 3u);
    EXPECT_THAT((std::vector{first.year, first.month, first.day, first.hour, first.minute}),
                ElementsAre(2003, 6, 15, 12, 30));
    EXPECT_THAT(printed_, HasSubstr("inflating: s/A.TXT\n"));

    struct Ended {};
    functions_.password = [](std::string&, std::size_t, const std::string&) -> std::int32_t { throw Ended{}; };
    folder_ = "C:\\THROWN";
    EXPECT_THROW(Unzip(EncryptedArchive("zipcrypt", "right")), Ended);
    EXPECT_THAT(drive_.Names("THROWN"), IsEmpty());
}

TEST_F(ZipLibraryTest, TakesNameListsAndNoOptions) {
    drive_.Write("A.ZIP", ZipWriter().Add({"s/A.TXT", "a"}).Add({"B.TXT", "b"}).Add({"C.TXT", "c"}).Bytes());
    EXPECT_EQ(Unzip({"s/A.TXT", "C.TXT"}, {"C.TXT"}), 0);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT"));

    DCL options;
    options.lpszZipFN = "C:\\A.ZIP", options.lpszExtractDir = "C:\\OUT", options.noflag = 1;
    EXPECT_THROW(Wiz_SingleEntryUnzip(0, {}, 0, {}, options, functions_), RuntimeError);
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT"));
}

} // namespace
} // namespace korlan
