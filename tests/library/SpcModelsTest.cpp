#include "library/SpcModels.h"

#include "tests/support/Failing.h"
#include "tests/support/Installation.h"
#include "tests/support/ZipWriter.h"

namespace korlan::test {

namespace {

constexpr const char* kArchive = "Korlan/Temp/sp/M.zip";
constexpr const char* kInstalled = "Korlan/SYS/M.SPC";
const std::string kModels = std::string("* models \x80\xFF\0 end", 17) + "\n.ENDS"; // bytes of no encoding
const std::string kAppended = "\r\n\r\n\r\n\r\n" + kModels + "\r\n";

class SpcModelsTest : public Installation {
protected:
    SpcModelsTest() {
        drive.Write(kArchive, ZipWriter().Add({.name = "M.SPC", .data = kModels}).Bytes());
        drive.Write(kIni, "[X]\r\n");
        korlan::Run.StatusSpinner = "|";
        Record("C:\\Korlan\\SYS\\");
    }
    void Record(const std::string& folder) {
        Tables.FileArray.Clear();
        FileRecord& record = Tables.FileArray.Append({});
        record.FileName = "M.SPC";
        record.FileZipName = "sp/M.zip";
        record.LocalFolder = folder;
        record.LocalFile = folder + "M.SPC";
        record.TempZipFile = "C:\\Korlan\\Temp\\sp\\M.zip";
    }
    std::int32_t Update() {
        std::int32_t success = 0;
        UpdateSPCFile(success, 1);
        return success;
    }
    bool RebuildRequested() const { return ReadIniString("LIVEUPDATESPCFROMWEB", "SPCFILEMDB", "") == "1"; }
};

} // namespace

TEST_F(SpcModelsTest, AppendsTheBytesAndRecordsTheArchive) {
    const std::string own = "* the user's own models, no line end";
    drive.Write(kInstalled, own);
    drive.SetMode(kInstalled, 0444);
    drive.Write("Korlan/Temp/M.SPC", "left over from an earlier run");
    drive.SetMode("Korlan/Temp/M.SPC", 0444);
    EXPECT_EQ(Update(), 1);
    EXPECT_EQ(drive.Read(kInstalled), own + kAppended);
    EXPECT_FALSE(drive.Exists("Korlan/Temp/M.SPC"));
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "SPC Files are updated.../");
    EXPECT_EQ(Update(), 1); // once more in the same run
    EXPECT_EQ(drive.Read(kInstalled), own + kAppended + kAppended);
    EXPECT_EQ(drive.Read(kIni), "[X]\r\n[LIVEUPDATESPCFROMWEB]\r\nSPCFILEMDB=1\r\n"
                                "[LIVEUPDATESPCFILEFROMWEB]\r\nnumber=2\r\n1=sp/M.zip\r\n2=sp/M.zip\r\n");
    EXPECT_EQ(Tables.AppliedSPCList.UpperBound(), 2);
}

TEST_F(SpcModelsTest, TheTwoFolderComparisons) {
    const struct {
        const char* folder;
        bool wasInstalled, requested;
    } cases[] = {
        {"C:\\Korlan\\SYS\\", true, true},  {"C:\\Korlan\\SYS\\", false, true}, {"C:\\KORLAN\\sys\\", true, false},
        {"C:\\KORLAN\\sys\\", false, true}, {"C:\\Korlan\\LIB\\", true, false}, {"C:\\Korlan\\LIB\\", false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.folder) + (c.wasInstalled ? " installed" : " new"));
        drive.Write(kIni, "");
        for (const char* installed : {"Korlan/SYS/M.SPC", "Korlan/LIB/M.SPC"}) {
            std::filesystem::remove(drive.HostPathOf(installed));
            if (c.wasInstalled) drive.Write(installed, "own");
        }
        Record(c.folder);
        EXPECT_EQ(Update(), 1);
        EXPECT_EQ(RebuildRequested(), c.requested);
        const std::string file = drive.Read(drive.Exists(kInstalled) && !c.wasInstalled ? kInstalled
                                            : std::string(c.folder).ends_with("LIB\\")  ? "Korlan/LIB/M.SPC"
                                                                                        : kInstalled);
        EXPECT_EQ(file, c.wasInstalled ? "own" + kAppended : kModels);
    }
}

TEST_F(SpcModelsTest, AnArchiveThatCannotBeExtractedIsRecordedAllTheSame) {
    const std::string good = drive.Read(kArchive);
    for (const bool wasInstalled : {true, false}) {
        for (const std::size_t length : {good.size(), good.size() - 30, std::size_t{0}}) { // 0: no archive
            SCOPED_TRACE(std::to_string(length) + (wasInstalled ? " installed" : " new"));
            drive.Write(kIni, "");
            std::filesystem::remove(drive.HostPathOf(kInstalled));
            if (wasInstalled) drive.Write(kInstalled, "own");
            drive.Write(kArchive, good.substr(0, length));
            if (length == 0) std::filesystem::remove(drive.HostPathOf(kArchive));
            const std::int32_t before = Tables.AppliedSPCList.UpperBound();
            EXPECT_EQ(Update(), 1);
            EXPECT_EQ(Tables.AppliedSPCList.UpperBound(), before + 1);
            const bool extracted = length == good.size();
            EXPECT_EQ(RebuildRequested(), extracted);
            EXPECT_EQ(drive.Exists(kInstalled) ? drive.Read(kInstalled) : "",
                      (wasInstalled ? "own" : "") + (!extracted     ? ""
                                                     : wasInstalled ? kAppended
                                                                    : kModels));
        }
    }
    EXPECT_THAT(Desktop().boxes, testing::IsEmpty());
}

TEST_F(SpcModelsTest, WhatFails) {
    drive.Write(kInstalled, "own");
    drive.Write("Korlan/Temp/sp/EMPTY.zip", ZipWriter().Add({.name = "OTHER.SPC", .data = "x"}).Bytes());
    Tables.FileArray[1].TempZipFile = "C:\\Korlan\\Temp\\sp\\EMPTY.zip"; // extracts well, but not the file named
    EXPECT_EQ(ErrorOf([this] { Update(); }), kErrFileNotFound);
    EXPECT_EQ(Tables.AppliedSPCList.UpperBound(), 0);
    drive.MakeFolders("Korlan/SYS/D/M.SPC"); // a folder where the new file should be
    std::int32_t success = 7;
    EXPECT_NE(ErrorOf([&] { CopyContentsToSPC(success, "C:\\Korlan\\SYS\\M.SPC", "C:\\Korlan\\SYS\\D\\M.SPC"); }), 0);
    EXPECT_EQ(success, 7);
    EXPECT_EQ(drive.Read(kInstalled), "own");

    std::int32_t result = 7;
    ReCreateMDBFileforSPC(result);
    EXPECT_EQ(result, 0);
    std::filesystem::remove(drive.HostPathOf(kIni));
    drive.MakeFolders(kIni); // cannot be written
    ReCreateMDBFileforSPC(result);
    EXPECT_EQ(result, 1);
    Record("C:\\Korlan\\LIB\\");
    EXPECT_EQ(Update(), 1);
    EXPECT_EQ(Tables.AppliedSPCList[1], "sp/M.zip");
    EXPECT_THAT(Desktop().boxes, testing::IsEmpty());
}

TEST_F(SpcModelsTest, TheSpinnerTurns) {
    const char* turns[][2] = {{"|", "/"}, {"/", "-"}, {"-", "\\"}, {"\\", "|"}, {"", ""}, {"x", "x"}};
    for (const auto& [before, after] : turns) {
        korlan::Run.StatusSpinner = before;
        LiveUpdateStatusSPC();
        EXPECT_EQ(frmUpdate.lblMsgline.Caption(), std::string("SPC Files are updated...") + after) << before;
    }
}

} // namespace korlan::test
