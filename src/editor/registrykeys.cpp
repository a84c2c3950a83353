#include "editor/registrykeys.h"

#include <string>
#include <unordered_map>

namespace {

struct KeptKeys {
    std::unordered_map<std::string, HKEY> open;
    ~KeptKeys() {
        for (auto& k : open) RegCloseKey(k.second);
    }
};

// Per thread, so that no lock is needed: each thread keeps its own handles.
thread_local KeptKeys Kept;

std::string Name(HKEY root, const char* path) {
    std::string name = std::to_string((unsigned long long)(UINT_PTR)root) + ":" + (path ? path : "");
    for (char& c : name)
        if (c >= 'A' && c <= 'Z') c = (char)(c + 32);
    return name;
}

}  // namespace

HKEY KeptKey(HKEY root, const char* path, bool create) {
    std::string name = Name(root, path);
    auto it = Kept.open.find(name);
    if (it != Kept.open.end()) return it->second;
    HKEY key = nullptr;
    LONG r = create ? RegCreateKeyExA(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr)
                    : RegOpenKeyExA(root, path, 0, KEY_READ, &key);
    if (r != ERROR_SUCCESS) return nullptr;
    if (!create) {
        // A key opened for reading may be written later: open it fully instead.
        HKEY full = nullptr;
        if (RegOpenKeyExA(root, path, 0, KEY_ALL_ACCESS, &full) == ERROR_SUCCESS) {
            RegCloseKey(key);
            key = full;
        }
    }
    Kept.open.emplace(name, key);
    return key;
}

void ForgetKeys(HKEY root, const char* path) {
    std::string prefix = Name(root, path);
    for (auto it = Kept.open.begin(); it != Kept.open.end();) {
        bool below = it->first.compare(0, prefix.size(), prefix) == 0 &&
                     (it->first.size() == prefix.size() || it->first[prefix.size()] == '\\');
        if (below) {
            RegCloseKey(it->second);
            it = Kept.open.erase(it);
        } else {
            ++it;
        }
    }
}
