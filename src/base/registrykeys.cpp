#include "base/registrykeys.h"

#include <string>
#include <unordered_map>

namespace {

struct KeptKeys {
    std::unordered_map<std::string, HKEY> open;
};

// Per thread, so that no lock is needed: each thread keeps its own handles.
// A plain pointer: a thread-local object with a destructor would run at
// thread exit under the loader lock, where the process's own exit can meet it.
thread_local KeptKeys* Kept;

KeptKeys& Mine() {
    if (!Kept) Kept = new KeptKeys;
    return *Kept;
}

std::string Name(HKEY root, const char* path) {
    std::string name = std::to_string((unsigned long long)(UINT_PTR)root) + ":" + (path ? path : "");
    for (char& c : name)
        if (c >= 'A' && c <= 'Z') c = (char)(c + 32);
    return name;
}

}  // namespace

HKEY KeptKey(HKEY root, const char* path, bool create) {
    std::string name = Name(root, path);
    auto it = Mine().open.find(name);
    if (it != Mine().open.end()) return it->second;
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
    Mine().open.emplace(name, key);
    return key;
}

void ForgetKeys(HKEY root, const char* path) {
    std::string prefix = Name(root, path);
    if (!Kept) return;
    for (auto it = Kept->open.begin(); it != Kept->open.end();) {
        bool below = it->first.compare(0, prefix.size(), prefix) == 0 &&
                     (it->first.size() == prefix.size() || it->first[prefix.size()] == '\\');
        if (below) {
            RegCloseKey(it->second);
            it = Kept->open.erase(it);
        } else {
            ++it;
        }
    }
}

void ReleaseKeptKeys() {
    if (!Kept) return;
    for (auto& k : Kept->open) RegCloseKey(k.second);
    delete Kept;
    Kept = nullptr;
}
