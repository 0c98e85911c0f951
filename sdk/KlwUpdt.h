/* The suite's library as it lies in the program folder: KLWUPDT.DLL on Windows, a shared object on Linux, with these C
   procedures; on Windows their names are exported without decoration.
   Paths and the texts of E_SetString and E_GetString are the host's own (UTF-8; on Windows its code page). All other
   texts are Windows-1252, as the library files hold them; in a descriptor the byte 0x80 separates the fields. Every
   text ends with a zero byte. A text handed out stays valid until the same procedure is called again. Procedures are
   called from one thread. */
#ifndef KLN_KLWUPDT_H
#define KLN_KLWUPDT_H

#include <stdint.h>

#ifdef _WIN32
#define KLN_SUITE_LIBRARY "KLWUPDT.DLL"
#define KLN_SUITE_CALL __stdcall
#else
#define KLN_SUITE_LIBRARY "libklwupdt.so"
#define KLN_SUITE_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct SuitePartInformation {
    const char* name;
    const char* second;
    const char* descriptor;
} SuitePartInformation;

typedef struct SuiteDevice {
    const char* first;
    const char* name;
    const char* third;
    const char* descriptor;
} SuiteDevice;

/* A result is 1 for yes or success and 0 for no or failure unless said otherwise. */
int32_t KLN_SUITE_CALL E_SetString(const char* name, const char* value);
const char* KLN_SUITE_CALL E_GetString(const char* name); /* null or empty when there is none */
int32_t KLN_SUITE_CALL DB_CreateDataBase(void);

int32_t KLN_SUITE_CALL E_GetPartInfo(const char* libraryPath, int32_t count,
                                     SuitePartInformation* first); /* records filled, or -1 */

int32_t KLN_SUITE_CALL E_OpenLibrary(const char* path, const char* libraryType,
                                     int32_t mode); /* handle, or 0 or less */
int32_t KLN_SUITE_CALL E_OpenLibToRead(int32_t library, const char* elementName);
int32_t KLN_SUITE_CALL E_OpenLibToWrite(int32_t library, const char* elementName);
int32_t KLN_SUITE_CALL E_CloseLibWrite(int32_t library);
const char* KLN_SUITE_CALL E_GetLibDirName(void);
int32_t KLN_SUITE_CALL E_CloseLibrary(int32_t library);

int32_t KLN_SUITE_CALL D_Device(void);
int32_t KLN_SUITE_CALL DB_DeviceMap(void);
int32_t KLN_SUITE_CALL D_LoadDevice(int32_t device, int32_t library);
int32_t KLN_SUITE_CALL D_SaveDevice(int32_t device, int32_t library);
int32_t KLN_SUITE_CALL D_ReadDevice(int32_t device, SuiteDevice* record);

int32_t KLN_SUITE_CALL S_Symbol(void);
int32_t KLN_SUITE_CALL DB_SymbMap(void);
int32_t KLN_SUITE_CALL S_LoadSymbol(int32_t symbol, int32_t library);
int32_t KLN_SUITE_CALL S_SaveSymbol(int32_t symbol, int32_t library);

int32_t KLN_SUITE_CALL OM_Delete(int32_t map, const char* name);
int32_t KLN_SUITE_CALL O_Rename(int32_t element, const char* name);
int32_t KLN_SUITE_CALL OM_GetFirst(int32_t map);
int32_t KLN_SUITE_CALL OM_SearchName(int32_t map, const char* name);
int32_t KLN_SUITE_CALL OM_SearchNameMask(int32_t map, const char* mask);

#ifdef __cplusplus
}
#endif

#endif
