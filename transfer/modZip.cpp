#include "transfer/modZip.h"

#include "app/base/TextHelpers.h"
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"
#include "platform/TextEncoding.h"
#include "platform/ZipLibrary.h"

#include <algorithm>

namespace korlan {

namespace {

// The two parts of the style are joined as texts, which gives 483 and not 51. The box shows Yes, No and Cancel,
// "No" as default.
std::int32_t OverwriteStyle() {
    return ToInteger(DecimalText(kBoxExclamation) + DecimalText(kBoxYesNoCancel));
}

std::int32_t AnswerOverwrite(const std::string& member) {
    switch (ShowMsgBox("Overwrite " + member + "?", OverwriteStyle(), "VBUnZip32 - File Already Exists!")) {
    case kAnswerYes: return kOverwriteYes;
    case kAnswerNo: return kOverwriteNo;
    default: return kOverwriteNone;
    }
}

std::string FirstCharacters(const std::string& text, std::size_t count) {
    std::size_t length = 0;
    while (length < text.size() && (IsUtf8Tail(text[length]) || count-- > 0)) ++length;
    return text.substr(0, length);
}

std::int32_t AnswerPassword(std::string& password, std::size_t maxLength) {
    if (modZip.SkipPassword != 0) return kPasswordSkip;
    const std::string answer = ShowInputBox("Please Enter The Password!", "", true);
    if (answer.empty()) {
        modZip.SkipPassword = 1;
        return kPasswordSkip;
    }
    password = FirstCharacters(answer, maxLength);
    return kPasswordGiven;
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string TwoDigits(std::int32_t number) {
    return (number < 10 ? "0" : "") + DecimalText(number);
}

void CollectListing(const ListedMember& member) {
    const auto line = [](const std::string& name, const std::string& size, const std::string& date,
                         const std::string& time) {
        modZip.ListText += Padded(name, 50) + " " + Padded(size, 10) + " " + Padded(date, 10) + " " + time + "\n";
    };
    if (modZip.ListText.empty()) line("Filename:", "Size", "Date", "Time");
    line(member.name, std::to_string(member.size),
         DecimalText(member.year) + "-" + TwoDigits(member.month) + "-" + TwoDigits(member.day),
         TwoDigits(member.hour) + ":" + TwoDigits(member.minute));
}

USERFUNCTIONS MakeCallbacks() {
    USERFUNCTIONS functions;
    functions.print = [](std::string_view text) {
        modZip.TextBuffer += text;
        return 0;
    };
    functions.replace = AnswerOverwrite;
    functions.password = [](std::string& password, std::size_t maxLength, const std::string&) {
        return AnswerPassword(password, maxLength);
    };
    functions.message = CollectListing;
    functions.service = GiveWay; // Cancel is answered while a large member is written
    return functions;
}

} // namespace

std::int32_t VBUnzip(const std::string& zipFile, const std::string& folder,
                     const std::array<std::int16_t, 15>& optionFlags) {
    modZip.SkipPassword = 0;
    modZip.TextBuffer.clear();
    modZip.ListText.clear();
    UnzipVersion version;
    version.structlen = sizeof version;
    UzpVersion2(version);
    USERFUNCTIONS functions = MakeCallbacks();
    DCL options{{}, zipFile, folder};
    std::ranges::copy(optionFlags, options.flags.begin());
    return Wiz_SingleEntryUnzip(0, {}, 0, {}, options, functions);
}

void Unzip(std::int32_t& completed, std::int32_t /*recordIndex*/, const std::string& zipFile, const std::string& folder,
           std::int32_t& result) {
    completed = 0;
    try {
        if (!zipFile.empty()) modZip.ZipFileName = zipFile;
        if (!folder.empty()) modZip.ExtractFolder = folder;
        result = VBUnzip(modZip.ZipFileName, modZip.ExtractFolder, modZip.OptionFlags);
        completed = 1;
        if (result != 0) LogLine("archive library: code " + DecimalText(result) + ", " + modZip.TextBuffer);
    } catch (const RuntimeError& error) { // seen by the completion flag
        LogTrapped("Unzip", error);
    }
}

std::optional<std::int32_t> ExtractArchive(const std::string& zipFile, const std::string& folder) {
    std::int32_t completed = 0;
    std::int32_t result = 0;
    Unzip(completed, 0, zipFile, folder, result);
    return completed != 0 ? std::optional(result) : std::nullopt;
}

} // namespace korlan
