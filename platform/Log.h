// What the program did, for whoever has to find out why it ended as it did: one text file a start, each line with its
// time in UTC. The log is nobody's error: what cannot be written is lost without a word, and no outcome depends on it.
#pragma once

#include "platform/RuntimeError.h"

#include <string>
#include <string_view>

namespace korlan {

// Begins the log of this start: klnupdt.log in `folder`. The logs of the two starts before move on to klnupdt.1.log and
// klnupdt.2.log. Until then, and when the file cannot be made, lines are dropped.
void BeginLog(const std::string& folder);

// One line of at most 4 KB, handed to the system when the call returns; none once the log holds 1 MB. Control
// characters become blanks; a user and a password in front of the host of an address become "***".
void LogLine(std::string_view text);

// An error that the trap of `procedure` has ended.
void LogTrapped(std::string_view procedure, const RuntimeError& error);

// The user's folder for the logs, made when missing and closed to others, as the host's C library names it; "" when
// there is none. Part of the back end.
std::string LogFolder();

} // namespace korlan
