#include "sample/suite/OwnFolder.h"

#include <windows.h>

#include <string>

std::filesystem::path suite::OwnFolder() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&OwnFolder), &self);
    std::wstring path(MAX_PATH, 0);
    path.resize(GetModuleFileNameW(self, path.data(), MAX_PATH));
    return std::filesystem::path(path).parent_path();
}
