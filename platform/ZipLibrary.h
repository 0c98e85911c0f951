// The zip library through its single-call interface: an option record, a callback record, one call an archive.
// Paths are Windows-form. Members land in the extraction folder under their last path component only; a component that
// is empty, "." or "..", or holds a colon or a NUL, a link or a device member is refused. A member is written under a
// temporary name in the extraction folder, closed, given its own time and renamed: it is absent or whole, never torn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

struct DCL { // options; the flags are 0 or 1
    std::int32_t ExtractOnlyNewer = 0, SpaceToUnderscore = 0, PromptToOverwrite = 0, fQuiet = 0, ncflag = 0, ntflag = 0,
                 nvflag = 0, nfflag = 0, nzflag = 0, ndflag = 0, noflag = 0, naflag = 0, nZIflag = 0, C_flag = 0,
                 fPrivilege = 0;
    std::string lpszZipFN;      // the archive
    std::string lpszExtractDir; // the folder its members go to; made when missing
};

// Answers of the overwrite callback.
inline constexpr std::int32_t kOverwriteNo = 100, kOverwriteYes = 102, kOverwriteAll = 103, kOverwriteNone = 104;

// Answers of the password callback.
inline constexpr std::int32_t kPasswordGiven = 0, kPasswordSkip = -2;

struct UnzipVersion {
    std::uint32_t structlen = 0;
    std::string version;
};

struct USERFUNCTIONS {
    std::function<std::int32_t(std::string_view text)> print;
    std::function<std::int32_t(const std::string& member)> replace; // an existing file: one of the kOverwrite answers
    // Fills `password` (at most maxLength characters); one of the kPassword answers.
    std::function<std::int32_t(std::string& password, std::size_t maxLength, const std::string& member)> password;
    std::function<void(std::uint64_t size, std::uint64_t packed, const std::string& member)> message; // a member listed
    std::function<std::int32_t(const std::string& member, std::uint64_t size)> service; // a member done; non-0 stops
};

// Extracts the whole archive (no name lists: both counts 0) or the members that the lists name. The library's code:
// 0 well, 1 warnings (a member refused or skipped), 3 archive damaged, 9 no archive, 50 disk full, 81 some members left
// out for want of a method, 82 bad password.
std::int32_t Wiz_SingleEntryUnzip(std::int32_t includeCount, const std::vector<std::string>& include,
                                  std::int32_t excludeCount, const std::vector<std::string>& exclude, const DCL& options,
                                  USERFUNCTIONS& functions);

void UzpVersion2(UnzipVersion& version);

} // namespace korlan
