/* clang-format off */
/* The suite's library, as the live-update wizard calls it. Whoever makes the suite builds it from this header alone, for
   Linux and for Windows; the wizard finds it in its own program folder, where it lies under the name KLN_SUITE_LIBRARY.
   Version 1.

   BINDING. The library is opened at the first call and stays open until the wizard ends. Procedures are bound by name,
   each at its first use: one that is missing fails there and the wizard goes on without it. Before the wizard takes the
   rows of a library file out of the part index it makes sure that E_GetPartInfo can be bound; without it the index is
   left alone.
   Linux: a shared object of the wizard's own architecture (64-bit as a rule), the names exported as they stand, the C
   calling convention. Windows: a 32-bit DLL, __stdcall, the names exported without decoration, which a module-definition
   file that lists them does with every linker (KlwUpdt.def beside this header). Pointers have the size of that program;
   int32_t is signed, records have no packing of their own. Every call comes from one thread, the one of the wizard's
   window; calls never overlap. No exception may leave a procedure. A procedure may take long; it must not show a window.

   TEXTS end with a zero byte. There are three forms:
     setting   UTF-8 on both systems. Paths in it are Windows-form ("C:\KORLAN\SYS"), on Linux too.
     path      what the system's own file calls take: on Linux an absolute path in UTF-8, on Windows one in the 8-bit
               code page of the system.
     8-bit     Windows-1252, the bytes of the library file as they stand. A name that was handed out comes back byte for
               byte. The wizard takes an element name of 1022 bytes or more as empty.
   Texts handed in are the wizard's: they are valid until the procedure returns. A text handed out is the library's: it
   stays valid and unchanged until the same procedure is called again, whatever other procedure is called meanwhile.

   LIBRARY FILES are the suite's own but for one thing: a file of parts holds the number of its parts as a little-endian
   signed 32-bit number at byte 16, which the wizard reads without the library, to know for how many records to make
   room. More than 1,000,000 are refused.

   ORDER OF CALLS. At start: E_SetString "LANGUAGEPATH", E_SetString "ServerPath", E_GetString "IniFile",
   DB_CreateDataBase. For a file of parts that was installed: E_GetPartInfo. For the merge of a library into another:
   E_OpenLibrary of the source, E_GetLibDirName until it is empty, E_CloseLibrary; then for every element
     E_OpenLibrary (target), E_OpenLibToRead: is it there already?, E_CloseLibrary;
     E_OpenLibrary (source), E_OpenLibToRead, OM_SearchName and OM_Delete of an element of that name in memory,
       D_Device, D_LoadDevice, E_CloseLibrary;
     O_Rename; E_OpenLibrary (target), E_OpenLibToWrite, D_SaveDevice, E_CloseLibWrite, E_CloseLibrary;
     D_ReadDevice.
   with the S_ procedures in place of the D_ ones for symbols, packages and padstacks, which have no D_ReadDevice. */
/* clang-format on */
#ifndef KLN_KLWUPDT_H
#define KLN_KLWUPDT_H

#include <stdint.h>

#ifdef _WIN32
#define KLN_SUITE_LIBRARY "KLWUPDT.DLL"
#define KLN_SUITE_API
#define KLN_SUITE_CALL __stdcall
#else
#define KLN_SUITE_LIBRARY "libklwupdt.so"
#define KLN_SUITE_API __attribute__((visibility("default")))
#define KLN_SUITE_CALL
#endif

#define KLN_SUITE_VERSION 1
#define KLN_PART_LIBRARY "KorlanDLL20"   /* library type of files of parts */
#define KLN_SYMBOL_LIBRARY "KorlanSLL20" /* of files of symbols, packages or padstacks */

#ifdef __cplusplus
extern "C" {
#endif

/* Unless said otherwise a result is 1 for yes or success and 0 for no or failure, and a handle is greater than 0. */

/* The version of this header the library was built from, KLN_SUITE_VERSION. A library without this procedure counts as
   version 1; one of another version than the wizard's is treated like a missing one. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_GetVersion(void);

/* ---- settings and start: names 8-bit, values setting ---- */

/* Keeps a value under a name until the process ends. The wizard sets
     "LANGUAGEPATH"  the folder of the texts in the chosen language, without a backslash at its end
     "ServerPath"    the program folder, without a backslash at its end */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_SetString(const char* name, const char* value);
/* The value kept under a name; null or empty when there is none. The wizard asks for
     "IniFile"       the full path of the suite's settings file, where it is another one than TESSARY.INI in the folder
                     that the wizard was started for; from then on the wizard reads and writes that file */
KLN_SUITE_API const char* KLN_SUITE_CALL E_GetString(const char* name);
/* Makes the design database in memory, empty: all loaded elements are gone, their handles are of nothing. */
KLN_SUITE_API int32_t KLN_SUITE_CALL DB_CreateDataBase(void);

/* ---- the parts of a library file: texts 8-bit ---- */

typedef struct SuitePartInformation {
    const char* name;
    const char* second;     /* not looked at; may be null */
    const char* descriptor; /* package name, a blank, ten fields separated by the byte 0x80: description, external index
                               code, simulation reference, manufacturer, type, technology, package type, mixed-mode
                               code, element code, symbols */
} SuitePartInformation;

/* Fills one record a part, in library order, at most `count` of them, which begin at `first`. The result is the number
   of records filled, -1 when the file cannot be read or is no file of parts. `libraryPath` is a path. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_GetPartInfo(const char* libraryPath, int32_t count, SuitePartInformation* first);

/* ---- open libraries ---- */

/* `path` is a path, `mode` is 0. A handle; 0 or less when the file cannot be opened as a library of that type. Several
   libraries may be open at once, and one file more than once. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_OpenLibrary(const char* path, const char* libraryType, int32_t mode);
/* Whether the library has the element; if so, the next load from this library takes it. Names are 8-bit and match
   without regard to the case of A to Z, here and below. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_OpenLibToRead(int32_t library, const char* elementName);
/* Prepares writing the element: a new one, or in place of the one of that name. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_OpenLibToWrite(int32_t library, const char* elementName);
/* Puts what was saved since E_OpenLibToWrite into the file. 0 when nothing was saved or the file cannot be written; it
   is then as it was. Closing a library without this call changes nothing. */
KLN_SUITE_API int32_t KLN_SUITE_CALL E_CloseLibWrite(int32_t library);
/* The next element name of the library opened last, from the first one on; empty after the last. */
KLN_SUITE_API const char* KLN_SUITE_CALL E_GetLibDirName(void);
KLN_SUITE_API int32_t KLN_SUITE_CALL E_CloseLibrary(int32_t library);

/* ---- elements in memory: parts (devices), and symbols with packages and padstacks ---- */

KLN_SUITE_API int32_t KLN_SUITE_CALL D_Device(void);     /* a new one under an empty name; its handle, 0 on failure */
KLN_SUITE_API int32_t KLN_SUITE_CALL DB_DeviceMap(void); /* the map of all parts in memory */
/* Loads what E_OpenLibToRead found, name included, into a part made by D_Device. */
KLN_SUITE_API int32_t KLN_SUITE_CALL D_LoadDevice(int32_t device, int32_t library);
/* Saves the part as the element that E_OpenLibToWrite prepared; 0 when it has another name than that. */
KLN_SUITE_API int32_t KLN_SUITE_CALL D_SaveDevice(int32_t device, int32_t library);

typedef struct SuiteDevice {
    const char* first; /* the first and the third are not looked at; may be null */
    const char* name;
    const char* third;
    const char* descriptor; /* as above */
} SuiteDevice;
/* Fills the record from the part; 0 when the handle is of none. */
KLN_SUITE_API int32_t KLN_SUITE_CALL D_ReadDevice(int32_t device, SuiteDevice* record);

KLN_SUITE_API int32_t KLN_SUITE_CALL S_Symbol(void); /* as the four for parts */
KLN_SUITE_API int32_t KLN_SUITE_CALL DB_SymbMap(void);
KLN_SUITE_API int32_t KLN_SUITE_CALL S_LoadSymbol(int32_t symbol, int32_t library);
KLN_SUITE_API int32_t KLN_SUITE_CALL S_SaveSymbol(int32_t symbol, int32_t library);

/* ---- maps of elements in memory ---- */

KLN_SUITE_API int32_t KLN_SUITE_CALL OM_Delete(int32_t map, const char* name); /* 0 when there is none of that name */
/* Gives an element its name; 0 when another one in its map has it. */
KLN_SUITE_API int32_t KLN_SUITE_CALL O_Rename(int32_t element, const char* name);
/* The first element of a map, the one of a name, the first whose name matches a mask of "*" and "?": 0 when none. */
KLN_SUITE_API int32_t KLN_SUITE_CALL OM_GetFirst(int32_t map);
KLN_SUITE_API int32_t KLN_SUITE_CALL OM_SearchName(int32_t map, const char* name);
KLN_SUITE_API int32_t KLN_SUITE_CALL OM_SearchNameMask(int32_t map, const char* mask);

#ifdef __cplusplus
}
#endif

#endif
