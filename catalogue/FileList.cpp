#include "catalogue/FileList.h"

#include "app/base/LocalText.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/AppliedPacks.h"
#include "catalogue/FileTables.h"
#include "platform/Log.h"

namespace korlan {

namespace {

constexpr std::int32_t kUncheckedImage = 3; // "DELETE"
constexpr std::int32_t kCheckedImage = 8;   // "NOTDELETE"
constexpr std::int32_t kDesignationSubItem = 4;

const std::string& Designation(const ListRow& row) {
    return *row.subItems.at(kDesignationSubItem - 1);
}

bool IsHelpFile(const std::string& name) {
    const std::string upper = UpperCase(name);
    return Contains(upper, ".HLP") || Contains(upper, ".CNT") || Contains(upper, ".GID");
}

void AddListRow(FileRecord& record) {
    ListView& list = frmUpdate.lvwFilesList;
    const std::int32_t row = list.Count() + 1;
    list.AddRow(row, "FILE-" + *record.FilePath + "\\" + record.FileName, record.FileName, "NOTDELETE");
    const auto folderLength = static_cast<std::int64_t>(record.LocalFolder->size()) - 1; // without the backslash
    list.SetSubItem(row, 1, UpperCase(Left(*record.LocalFolder, folderLength)));
    list.SetSubItem(row, 2, record.FileSize);
    list.SetSubItem(row, 3, GetLocalText("Not updated", "991858"));
    list.SetSubItem(row, kDesignationSubItem, record.FilePath);
    list.SetRowTag(row, "FILE");
    list.SetChecked(row, true);
    record.Row = row;
    ++frmUpdate.CheckedCount;
    EditMsgline(DecimalText(frmUpdate.CheckedCount) + GetLocalText(" File(s) Selected for Updation", "991859"));
}

// Gives row `row` the check mark `checked`; a row already in that state is left alone.
void CarryOver(std::int32_t row, bool checked) {
    ListView& list = frmUpdate.lvwFilesList;
    if (list.Row(row).checked == checked) return;
    list.SetSmallIcon(row, checked ? kCheckedImage : kUncheckedImage);
    if (checked) {
        ++frmUpdate.CheckedCount;
    } else if (frmUpdate.CheckedCount != 0) {
        --frmUpdate.CheckedCount;
    }
    list.SetChecked(row, checked);
}

} // namespace

void ShowNoUpdates() {
    LogLine("shown: no updates found");
    frmUpdate.WizardState = 1;
    frmUpdate.lblUpdate.SetCaption(GetLocalText("No updates found", "991848"));
    frmUpdate.cmdUpdate.SetVisible(false);
    frmUpdate.cmdCancel.SetCaption(GetLocalText("Finish", "11200"));
    EditMsgline("");
}

void DisplayFilesInformationsFromWeb() {
    frmUpdate.lblUpdate.SetCaption(GetLocalText("Live update found the following new files:", "991857"));
    for (FileRecord& record : Tables.FileArray)
        if (record.UpdateFlag == 1) AddListRow(record);
    if (frmUpdate.CheckedCount == 0) {
        ShowNoUpdates();
        UpdateIniNoUpdatesFound();
        return;
    }
    LogLine("shown: a list of " + DecimalText(frmUpdate.lvwFilesList.Count()) + " files");
    frmUpdate.lvwFilesList.SetVisible(true);
    EditMsgline("");
}

bool RowsLinked(const std::string& changed, const std::string& other, const std::string& otherName) {
    if (IsHelpFile(otherName)) return false;
    const std::string from = UpperCase(changed);
    const std::string to = UpperCase(other);
    return changed == other || (Contains(from, "\\COUNTRY") && (to == "ROOT" || Contains(to, "\\COUNTRY"))) ||
           (Contains(from, "ROOT") && Contains(to, "\\COUNTRY")) ||
           (Contains(from, "\\LIB") && (Contains(to, "\\KDS_CML") || Contains(to, "\\LIB"))) ||
           (Contains(from, "\\KDS_CML") && Contains(to, "\\LIB"));
}

void lvwFilesList_ItemCheck(std::int32_t row) {
    ListView& list = frmUpdate.lvwFilesList;
    const ListRow item = list.Row(row);
    list.SetSmallIcon(row, item.checked ? kCheckedImage : kUncheckedImage);
    frmUpdate.CheckedCount += item.checked ? 1 : -1; // no floor, unlike for the rows that follow it
    if (IsHelpFile(item.text)) return;               // it carries nothing along
    for (std::int32_t j = 1; j <= list.Count(); ++j)
        if (RowsLinked(Designation(item), Designation(list.Row(j)), list.Row(j).text)) CarryOver(j, item.checked);
    frmUpdate.cmdUpdate.SetEnabled(frmUpdate.CheckedCount != 0);
    EditMsgline(DecimalText(frmUpdate.CheckedCount) + GetLocalText(" File(s) Selected", "991868"));
}

} // namespace korlan
