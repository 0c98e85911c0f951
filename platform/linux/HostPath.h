// Windows-form paths ("C:\KORLAN\SYS") and the host's own. Drive letters resolve through a folder of links named "c:",
// "d:" ...: $KLN_DRIVES, else $WINEPREFIX/dosdevices, else ~/.wine/dosdevices. Z: is "/" when that folder lacks it.
#pragma once

#include <string>

namespace korlan {

// The host's path. Every component that is there under another spelling of its letters is found, exact spelling first;
// what is missing keeps the spelling given. Relative paths start from the current folder; ".." is resolved in the text.
// Blanks and dots at the end go, as on Windows. A drive that is not there, a NUL or a network path raises 76.
std::string HostPath(const std::string& windowsPath);

// The same without a look for the file: in the spelling its folder is known to have, else as given. Where there is such
// a file it is the one that HostPath finds. "" for the top of a drive that is the host's root.
std::string LikelyHostPath(const std::string& windowsPath);

// The Windows form of a host path: the drive whose folder is the longest part of it, else Z:.
std::string WindowsPath(const std::string& hostPath);

// True when the path names no drive or one that is there.
bool DriveIsThere(const std::string& windowsPath);

// The spelling under which `name` is in the host's folder: as given, else the first in byte order that differs in case
// only, else as given.
std::string SpellingInFolder(const std::string& hostFolder, const std::string& name);

} // namespace korlan
