// The spine of the program: the form's load, query-unload and unload handlers, and the only place that connects
// handlers to controls.
#pragma once

#include <cstdint>

namespace korlan {

// Connects every handler to its control. Once, before Form_Load.
void AttachHandlers();

// The whole start-up: settings, language, the window, the search. Yields. Ends the process when another copy runs, when
// the suite is open, when a newer build takes over, and on any run-time error (silently).
void Form_Load();

// cancel = -1 while a search or a run is under way, else left alone; closes the help windows.
void Form_QueryUnload(std::int16_t& cancel, std::int32_t mode);

// Starts the companion program when a successful run brought a new updater, and ends the process.
void Form_Unload();

// Builds the list's columns and the titles, and connects the suite's library.
void FormFill();

// Tells the suite's library where the program lies and takes over its INI file, if it names one. Without the library
// everything stays as it is.
void InitLibraryInterface();

} // namespace korlan
