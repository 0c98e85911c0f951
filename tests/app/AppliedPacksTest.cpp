#include "catalogue/AppliedPacks.h"

#include "catalogue/FileTables.h"
#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

class AppliedPacks : public AppTest {
protected:
    // A pack whose members are archive names; a "+" in front marks one as among the files to update.
    static void AddPack(const std::string& name, const std::vector<std::string>& members) {
        SPRecord& pack = Tables.FileArraySP.Append({});
        pack.FileName = name;
        pack.Read = true;
        for (const std::string& member : members) {
            const bool marked = member[0] == '+';
            Tables.FileArray.Append({}).FileZipName = member.substr(marked ? 1 : 0);
            pack.Files.Append({Tables.FileArray.UpperBound(), marked ? 1 : 0});
        }
    }
    static std::vector<std::string> Applied() { return {Tables.AppliedSPList.begin(), Tables.AppliedSPList.end()}; }
    static std::string Stored(const std::string& key) { return ReadIniString("LIVEUPDATEFROMWEB", key, "-"); }
};

using Entries = std::vector<std::string>;

TEST_F(AppliedPacks, ListsAreReadBySentinelAndCount) {
    WriteIni("[LIVEUPDATEFROMWEB]\r\nNumber=4\r\n1=\" SP1.mdb \"\r\n3=aa\r\n4=AA\r\n5=SP5.mdb\r\n"
             "[LIVEUPDATESPCFILEFROMWEB]\r\nnumber=1\r\n1=M.zip\r\n[Tessary]\r\nVer=1.20\r\n");
    Tables.AppliedSPList.Append("left from before");
    IniWebR();
    EXPECT_EQ(Applied(), (Entries{"SP1.mdb", "", "aa", ""}));
    EXPECT_EQ(Entries(Tables.AppliedSPCList.begin(), Tables.AppliedSPCList.end()), Entries{"M.zip"});
    EXPECT_EQ(Settings.SuiteVersion, "1.20");
}

TEST_F(AppliedPacks, ACountThatIsNoneLeavesTheListEmptyOrBounded) {
    const std::pair<std::string, std::int32_t> rows[] = {
        {"-3", 0}, {"many", 0}, {"", 0}, {"2000000000", 51}, {"99999999999999", 55}}; // the file's own length
    AddPack("SP2.mdb", {});
    std::string next;
    for (const auto& [number, entries] : rows) {
        WriteIni("[LIVEUPDATEFROMWEB]\r\nNumber=" + number + "\r\n1=SP1.mdb\r\n");
        IniWebR();
        EXPECT_EQ(Tables.AppliedSPList.UpperBound(), entries) << number;
        UpdateIniNoUpdatesFound();
        next += Stored("Number") + " ";
    }
    EXPECT_EQ(Tables.AppliedSPList[1], "SP1.mdb");
    EXPECT_EQ(Settings.SuiteVersion, "?");
    EXPECT_EQ(next, "-2 1 1 2000000001 2147483648 ");
    EXPECT_EQ(Stored("2147483648"), "SP2.mdb");
}

TEST_F(AppliedPacks, ListsHoldWhatTheFileHolds) {
    std::string entries;
    for (int i = 1; i <= 40'000; ++i) entries += std::to_string(i) + "=" + std::to_string(i) + ".mdb\r\n";
    WriteIni("[LIVEUPDATEFROMWEB]\r\nNumber=40000\r\n" + entries);
    IniWebR();
    ASSERT_EQ(Tables.AppliedSPList.UpperBound(), 40'000);
    EXPECT_EQ(Tables.AppliedSPList[40'000], "40000.mdb");
    AddPack("SP2.mdb", {});
    UpdateIniFile();
    EXPECT_EQ(Stored("Number") + " " + Stored("40001"), "40001 SP2.mdb");
}

TEST_F(AppliedPacks, APackIsAppliedWhenEveryMarkedMemberWasInstalled) {
    WriteIni("[LIVEUPDATEFROMWEB]\r\nNumber=1\r\n1=SP1.mdb\r\n[Other]\r\nkey=value\r\n");
    IniWebR();
    AddPack("whole.mdb", {"+A.zip", "+b.ZIP ", "C.zip"});
    AddPack("half.mdb", {"+A.zip", "+C.zip"});
    AddPack("nothing to do.mdb", {"C.zip"});
    AddPack("empty.mdb", {});
    AddPack("never fetched.mdb", {}); // recorded by neither
    Tables.FileArraySP[5].Read = false;
    for (const char* archive : {" a.ZIP", "B.zip", "D.zip"}) Tables.UpdatedFiles.Append(archive);
    UpdateIniFile();
    EXPECT_EQ(Applied(), (Entries{"SP1.mdb", "whole.mdb", "nothing to do.mdb", "empty.mdb"}));
    EXPECT_EQ(Ini(), "[LIVEUPDATEFROMWEB]\r\nNumber=4\r\n1=SP1.mdb\r\n2=whole.mdb\r\n3=nothing to do.mdb\r\n"
                     "4=empty.mdb\r\n[Other]\r\nkey=value\r\n");

    Tables.UpdatedFiles.Append("C.zip"); // a later run brings the rest
    UpdateIniFile();
    EXPECT_EQ(Stored("Number") + " " + Stored("5"), "5 half.mdb") << "only the pack not recorded before";

    AddPack("unwanted.mdb", {"+X.zip"});
    UpdateIniNoUpdatesFound(); // a search without updates records every pack once more
    EXPECT_EQ(Stored("Number") + " " + Stored("6") + " " + Stored("10"), "10 whole.mdb unwanted.mdb");
}

TEST_F(AppliedPacks, AFileThatRefusesWritesWarnsAndLosesNothing) {
    Settings.IniFilePath = "C:\\nowhere\\TESSARY.INI";
    AddPack("SP1.mdb", {});
    UpdateIniFile();
    EXPECT_EQ(BoxTexts().size(), 2U) << "the count and the entry";
    EXPECT_EQ(Applied(), Entries{"SP1.mdb"});
}

} // namespace
} // namespace korlan::test
