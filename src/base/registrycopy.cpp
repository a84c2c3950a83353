// Tree walks over the registry with a stack of our own on the heap: a key
// may be 512 levels deep and a name 16,383 characters long, more than a
// thread's stack should hold level by level.
#include "base/registrycopy.h"

#include <string>
#include <utility>
#include <vector>

#include "base/handles.h"
#include "base/registrykeys.h"

namespace {

HKEY RootOf(HKEY root) { return root ? root : HKEY_CURRENT_USER; }

// The longest key or value name the registry keeps, with its terminator.
const DWORD kNameSize = 16384;
// The registry nests keys at most this deep; a copy deeper than that is one
// that keeps finding what it has just written.
const size_t kMaxDepth = 512;

// What a copy did to keys that were there before it, so that a failure can
// take it back.
struct CopyUndo {
    std::vector<std::string> createdKeys;  // the top of each tree the copy made
    struct OldValue {
        std::string key, name;
        bool existed;
        DWORD type;
        std::vector<BYTE> data;
    };
    std::vector<OldValue> values;  // each value set in a key that was there before
};

// One key on the way down: both handles, and the next subkey to copy.
struct CopyLevel {
    HKEY from = nullptr, to = nullptr;
    std::string toPath;
    bool toIsNew = false;  // made by this copy: nothing in it to keep
    DWORD nextSubkey = 0;
};

void CloseLevel(CopyLevel& level) {
    if (level.from) RegCloseKey(level.from);
    if (level.to) RegCloseKey(level.to);
    level.from = level.to = nullptr;
}

bool NoteOldValue(HKEY key, const std::string& keyPath, const char* name, CopyUndo& undo) {
    CopyUndo::OldValue old{keyPath, name, false, 0, {}};
    DWORD size = 0;
    LONG r = RegQueryValueExA(key, name, nullptr, &old.type, nullptr, &size);
    if (r == ERROR_FILE_NOT_FOUND) {
        undo.values.push_back(std::move(old));
        return true;
    }
    if (r != ERROR_SUCCESS) return false;
    old.existed = true;
    old.data.resize(size + 2);
    size = (DWORD)old.data.size();
    if (RegQueryValueExA(key, name, nullptr, &old.type, old.data.data(), &size) != ERROR_SUCCESS) return false;
    old.data.resize(size);
    undo.values.push_back(std::move(old));
    return true;
}

bool CopyValues(const CopyLevel& level, std::vector<char>& name, std::vector<BYTE>& data, CopyUndo& undo) {
    for (DWORD i = 0;;) {
        DWORD length = kNameSize, type = 0, size = (DWORD)data.size();
        LONG r = RegEnumValueA(level.from, i, name.data(), &length, nullptr, &type, data.data(), &size);
        if (r == ERROR_NO_MORE_ITEMS) return true;
        if (r == ERROR_MORE_DATA) {
            data.resize((size_t)size + 256);  // the same value again, with room for it
            continue;
        }
        if (r != ERROR_SUCCESS) return false;
        if (!level.toIsNew && !NoteOldValue(level.to, level.toPath, name.data(), undo)) return false;
        if (RegSetValueExA(level.to, name.data(), 0, type, data.data(), size) != ERROR_SUCCESS) return false;
        i++;
    }
}

// Opens root\path one component at a time: the platform's ...A calls take
// a path of at most 260 characters on some systems (Wine among them), and a
// deep key's path is longer. Null for a path with no component.
HKEY OpenPath(HKEY root, const std::vector<std::string>& parts, REGSAM access) {
    HKEY key = nullptr;
    for (const std::string& part : parts) {
        HKEY next = nullptr;
        LONG r = RegOpenKeyExA(key ? key : root, part.c_str(), 0, access, &next);
        if (key) RegCloseKey(key);
        if (r != ERROR_SUCCESS) return nullptr;
        key = next;
    }
    return key;
}

std::string Joined(const std::vector<std::string>& parts) {
    std::string path;
    for (const std::string& part : parts) path += (path.empty() ? "" : "\\") + part;
    return path;
}

// Opens root\path for writing, making the keys that are missing one by one,
// so that the first one made is known and can be taken back.
HKEY CreatePath(HKEY root, const std::vector<std::string>& parts, bool* madeAny, CopyUndo& undo) {
    *madeAny = false;
    HKEY key = nullptr;
    std::string done;
    for (const std::string& part : parts) {
        done = done.empty() ? part : done + "\\" + part;
        HKEY next = nullptr;
        DWORD disposition = 0;
        LONG r = RegCreateKeyExA(key ? key : root, part.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &next,
                                 &disposition);
        if (key) RegCloseKey(key);
        key = nullptr;
        if (r != ERROR_SUCCESS) return nullptr;
        key = next;
        if (disposition == REG_CREATED_NEW_KEY && !*madeAny) {
            *madeAny = true;
            undo.createdKeys.push_back(done);
        }
    }
    return key;
}

void TakeBack(HKEY root, const CopyUndo& undo) {
    for (auto key = undo.createdKeys.rbegin(); key != undo.createdKeys.rend(); ++key) DeleteRegTree(root, key->c_str());
    for (auto old = undo.values.rbegin(); old != undo.values.rend(); ++old) {
        AutoHKEY key;
        if (!(key.h = OpenPath(root, RegistryPathParts(old->key), KEY_SET_VALUE))) continue;
        if (old->existed)
            RegSetValueExA(key.h, old->name.c_str(), 0, old->type, old->data.data(), (DWORD)old->data.size());
        else
            RegDeleteValueA(key.h, old->name.c_str());
    }
}

}  // namespace

std::vector<std::string> RegistryPathParts(const std::string& path) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('\\', start);
        if (end == std::string::npos) end = path.size();
        if (end > start) parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

int CopyRegTree(HKEY sourceRoot, const char* sourcePath, HKEY targetRoot, const char* targetPath) {
    const std::vector<std::string> source = RegistryPathParts(sourcePath ? sourcePath : "");
    const std::vector<std::string> target = RegistryPathParts(targetPath ? targetPath : "");
    if (source.empty() || target.empty()) return 0;  // a whole root is never copied, nor written over
    const HKEY into = RootOf(targetRoot);
    CopyLevel first;
    if (!(first.from = OpenPath(RootOf(sourceRoot), source, KEY_READ))) return 0;
    CopyUndo undo;
    first.toPath = Joined(target);
    first.to = CreatePath(into, target, &first.toIsNew, undo);
    std::vector<char> name(kNameSize);
    std::vector<BYTE> data(1 << 16);
    std::vector<CopyLevel> stack;
    stack.push_back(first);
    bool ok = first.to && CopyValues(stack.back(), name, data, undo);
    while (ok && !stack.empty()) {
        CopyLevel& level = stack.back();
        DWORD length = kNameSize;
        LONG r = RegEnumKeyExA(level.from, level.nextSubkey, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (r == ERROR_NO_MORE_ITEMS) {
            CloseLevel(level);
            stack.pop_back();
            continue;
        }
        if (r != ERROR_SUCCESS || stack.size() >= kMaxDepth) {
            ok = false;
            break;
        }
        level.nextSubkey++;
        CopyLevel child;
        child.toPath = level.toPath + "\\" + name.data();
        DWORD disposition = 0;
        if (RegOpenKeyExA(level.from, name.data(), 0, KEY_READ, &child.from) != ERROR_SUCCESS ||
            RegCreateKeyExA(level.to, name.data(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &child.to,
                            &disposition) != ERROR_SUCCESS) {
            CloseLevel(child);
            ok = false;
            break;
        }
        child.toIsNew = level.toIsNew || disposition == REG_CREATED_NEW_KEY;
        if (!level.toIsNew && disposition == REG_CREATED_NEW_KEY) undo.createdKeys.push_back(child.toPath);
        stack.push_back(child);
        ok = CopyValues(stack.back(), name, data, undo);
    }
    for (CopyLevel& level : stack) CloseLevel(level);
    if (!ok) {
        ForgetKeys(into, first.toPath.c_str());
        TakeBack(into, undo);
    }
    return ok ? 1 : 0;
}

int DeleteRegTree(HKEY root, const char* path) {
    std::vector<std::string> parts = RegistryPathParts(path ? path : "");
    if (parts.empty()) return 0;
    root = RootOf(root);
    ForgetKeys(root, Joined(parts).c_str());  // kept handles below a deleted key would be stale
    const std::string topName = parts.back();
    parts.pop_back();
    HKEY parent = parts.empty() ? root : OpenPath(root, parts, KEY_ALL_ACCESS);
    if (!parent) return 0;
    // Handles down to the key in hand, each opened from the one before (the
    // first from the parent), so that no path grows with the depth.
    struct Open {
        HKEY key;
        std::string name;
    };
    std::vector<Open> stack;
    std::vector<char> name(kNameSize);
    HKEY top = nullptr;
    if (RegOpenKeyExA(parent, topName.c_str(), 0, KEY_ALL_ACCESS, &top) == ERROR_SUCCESS) stack.push_back({top, topName});
    bool gone = false;
    // Down to a key with no subkeys, delete it, back up one level; each turn
    // deletes a key or goes down one, so the walk ends.
    while (!stack.empty()) {
        DWORD length = kNameSize;
        if (RegEnumKeyExA(stack.back().key, 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
            ERROR_SUCCESS) {
            HKEY below = nullptr;
            if (RegOpenKeyExA(stack.back().key, name.data(), 0, KEY_ALL_ACCESS, &below) != ERROR_SUCCESS) break;
            stack.push_back({below, name.data()});
            continue;
        }
        Open done = stack.back();
        stack.pop_back();
        RegCloseKey(done.key);
        if (RegDeleteKeyA(stack.empty() ? parent : stack.back().key, done.name.c_str()) != ERROR_SUCCESS) break;
        gone = stack.empty();
    }
    for (Open& open : stack) RegCloseKey(open.key);
    if (parent != root) RegCloseKey(parent);
    return gone ? 1 : 0;
}

HKEY OpenRegistryPath(HKEY root, const std::string& path, REGSAM access) {
    return OpenPath(RootOf(root), RegistryPathParts(path), access);
}
