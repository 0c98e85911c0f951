// A clean-up handler whose cache is the files of the system's own cache folder, without folders below it.
#include "tests/win32/Doubles.h"

#include <emptyvc.h>
#include <shlobj.h>

#include <filesystem>
#include <vector>

namespace doubles {
namespace {

LPWSTR TaskText(const wchar_t* text) {
    const std::size_t bytes = (wcslen(text) + 1) * sizeof(wchar_t);
    return static_cast<LPWSTR>(memcpy(CoTaskMemAlloc(bytes), text, bytes));
}

class CacheDouble : public Counted<IEmptyVolumeCache> {
public:
    CacheDouble() : Counted(Guid(L"{8FCE5227-04DA-11d1-A004-00805F8ABE06}")) {}

    STDMETHODIMP Initialize(HKEY key, LPCWSTR volume, LPWSTR* name, LPWSTR* description, DWORD* flags) override {
        *name = TaskText(L"Internet Cache Files");
        *description = TaskText(L"A test's own");
        *flags = 0;
        const bool isRoot = wcslen(volume) == 3 && volume[1] == L':' && volume[2] == L'\\';
        return key && isRoot ? S_OK : E_INVALIDARG;
    }

    STDMETHODIMP GetSpaceUsed(DWORDLONG* used, IEmptyVolumeCacheCallBack* callback) override {
        *used = 0;
        for (const auto& file : Files()) {
            *used += file.file_size();
            if (callback->ScanProgress(*used, 0, nullptr) != S_OK) return E_ABORT;
        }
        return S_OK;
    }

    STDMETHODIMP Purge(DWORDLONG toFree, IEmptyVolumeCacheCallBack* callback) override {
        DWORDLONG freed = 0;
        for (const auto& file : Files()) {
            freed += file.file_size();
            std::error_code failed;
            if (!std::filesystem::remove(file.path(), failed)) return E_FAIL;
            if (callback->PurgeProgress(freed, toFree, 0, nullptr) != S_OK) return E_ABORT;
        }
        return S_OK;
    }

    STDMETHODIMP ShowProperties(HWND) override { return S_FALSE; }
    STDMETHODIMP Deactivate(DWORD* flags) override {
        *flags = 0;
        return S_OK;
    }

private:
    static std::vector<std::filesystem::directory_entry> Files() {
        std::wstring folder(MAX_PATH, 0);
        SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_INTERNET_CACHE, TRUE);
        std::vector<std::filesystem::directory_entry> files;
        std::error_code missing;
        for (const auto& entry : std::filesystem::directory_iterator(folder.c_str(), missing))
            if (entry.is_regular_file()) files.push_back(entry);
        return files;
    }
};

} // namespace

IUnknown* MakeCacheHandler() {
    return new CacheDouble;
}

} // namespace doubles
