// DE::Registry: keys and values of the registry through one object holding a root key, at most
// one open current key with its path, and an access mask. Paths and names are wide strings.
//
// Windows: advapi32. Linux: the library's persistent hive store (UTIL_REGISTRY_DIR, default
// /var/lib/util/registry), with the same value types, sizes and Win32 error codes.
//
// Path rule: a path starting with a backslash is absolute (taken below the root key, the
// backslash removed); any other path is relative to the current key when one is open, else to
// the root key. Operations return false (or -1 / rdUnknown / an empty result) on failure and
// never throw. An instance is not thread-safe. Copies share the key handles of their source:
// only one of them may close the keys.
#pragma once

#include <string>
#include <vector>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

enum RegDataType { rdUnknown = 0, rdString = 1, rdExpandString = 2, rdInteger = 3, rdBinary = 4 };

struct RegDataInfo {
  RegDataType RegData;
  int DataSize;  // bytes
};

struct RegKeyInfo {
  int NumSubKeys;
  int MaxSubKeyLen;  // characters
  int NumValues;
  int MaxValueLen;  // longest value name, characters
  int MaxDataLen;   // bytes
  FILETIME FileTime;
};

struct RegistryPeer;  // test access to the private helpers

class UTIL_API Registry {
 public:
  // Root HKEY_CURRENT_USER, no current key, lazy write, Access KEY_ALL_ACCESS.
  Registry();
  // The same with Access = access and LastError = 0.
  explicit Registry(unsigned long access);
  // Closes the current key (flushed first unless lazy). A connected remote root stays open.
  virtual ~Registry();
  Registry(const Registry&) = default;
  Registry& operator=(const Registry&) = default;

  HKEY GetRootKey() const { return RootKey; }
  HKEY GetCurrentKey() const { return CurrentKey; }
  std::wstring GetCurrentPathW() const { return CurrentPath; }
  unsigned long GetAccess() const { return Access; }
  void SetAccess(unsigned long access) { Access = access; }
  bool GetLazyWrite() const { return LazyWrite; }
  void SetLazyWrite(bool lazy) { LazyWrite = lazy; }
  // Stores the handle; the previous current key is not closed.
  void SetCurrentKey(HKEY key) { CurrentKey = key; }
  int GetLastError() const { return LastError; }
  bool GetUseDeleteKeyEx() const { return UseDeleteKeyEx; }
  void SetUseDeleteKeyEx(bool use) { UseDeleteKeyEx = use; }
  // LastError = code; true when code is 0.
  bool CheckResult(int code);
  // RootKey when no key is open or relative is false, else CurrentKey.
  HKEY GetBaseKey(bool relative);

  // ---- Keys ----
  // Nothing when key is the root already; otherwise releases a connected root, stores key and
  // closes the current key. Returns true.
  bool SetRootKey(HKEY key);
  // Opens (canCreate: creates) the key with Access and makes it current. Records LastError.
  bool OpenKey(const std::wstring& path, bool canCreate);
  bool OpenKey(HKEY root, const std::wstring& path, bool canCreate);
  // Opens with KEY_READ, then KEY_READ without KEY_NOTIFY, then KEY_QUERY_VALUE (view bits of
  // Access added); Access becomes the rights that worked.
  bool OpenKeyReadOnly(const std::wstring& path);
  bool OpenKeyReadOnly(HKEY root, const std::wstring& path);
  void CloseKey();
  // Creates the key (KEY_ALL_ACCESS) and closes it; the current key does not change.
  bool CreateKey(const std::wstring& path);
  // Deletes the key with every sub-key.
  bool DeleteKey(const std::wstring& path);
  bool KeyExists(const std::wstring& path);
  bool HasSubKeys();
  // The current key's counts and lengths; false when no key is open.
  bool GetKeyInfo(RegKeyInfo& info);
  bool GetKeyNames(std::vector<std::wstring>& names);
  bool GetValueNames(std::vector<std::wstring>& names);
  // Connects to machineName's root key (RootKey); it becomes RootKey, owned by this object.
  bool RegistryConnect(const std::wstring& machineName);
  // Hive operations; the caller enables the backup and restore privileges first.
  bool LoadKey(const std::wstring& subKey, const std::wstring& fileName);
  bool UnLoadKey(const std::wstring& subKey);
  bool SaveKey(const std::wstring& path, const std::wstring& fileName);
  bool RestoreKey(const std::wstring& path, const std::wstring& fileName);
  bool ReplaceKey(const std::wstring& path, const std::wstring& newFileName, const std::wstring& oldFileName);
  // Does nothing (kept in the interface on purpose).
  void MoveKey(const std::wstring& oldPath, const std::wstring& newPath, bool deleteOld);

  // ---- Values of the current key ----
  bool GetDataInfo(const std::wstring& name, RegDataInfo& info);
  bool ValueExists(const std::wstring& name);
  int GetDataSize(const std::wstring& name);  // bytes, -1 on failure
  RegDataType GetDataType(const std::wstring& name);
  // Raw read; size is the buffer size in, the data size out (bytes).
  bool GetData(const std::wstring& name, void* buffer, int& size, RegDataType& type);
  bool PutData(const std::wstring& name, const void* buffer, int size, RegDataType type);
  // REG_SZ or REG_EXPAND_SZ (unexpanded), up to the first NUL.
  bool ReadString(const std::wstring& name, std::wstring& out);
  bool ReadInteger(const std::wstring& name, int& out);   // REG_DWORD only
  bool ReadBool(const std::wstring& name, bool& out);     // REG_DWORD only
  bool ReadFloat(const std::wstring& name, double& out);  // 8-byte REG_BINARY only
  // REG_BINARY or an unmapped type that fits bufferSize; size receives the data size.
  bool ReadBinaryData(const std::wstring& name, void* buffer, int bufferSize, int& size);
  bool WriteString(const std::wstring& name, const std::wstring& text);
  bool WriteExpandString(const std::wstring& name, const std::wstring& text);
  bool WriteInteger(const std::wstring& name, int value);
  bool WriteBool(const std::wstring& name, bool value);
  bool WriteFloat(const std::wstring& name, double value);
  bool WriteBinaryData(const std::wstring& name, const void* buffer, int size);
  bool DeleteValue(const std::wstring& name);
  // Fails when newName exists; types outside RegDataType become REG_NONE.
  bool RenameValue(const std::wstring& oldName, std::wstring& newName);

  // ---- One-call operations on a temporary instance whose Access is `access` ----
  // Readers open read-only (only the view bits of access count); writers create the key.
  static bool GetValue(HKEY root, const std::wstring& path, const std::wstring& name, unsigned long& out,
                       unsigned long access);
  static bool GetValue(HKEY root, const std::wstring& path, const std::wstring& name, int& out,
                       unsigned long access);
  static bool GetValue(HKEY root, const std::wstring& path, const std::wstring& name, std::wstring& out,
                       unsigned long access);
  static bool GetValue(HKEY root, const std::wstring& path, const std::wstring& name, void* buffer,
                       int bufferSize, int& size, unsigned long access);
  static bool SetValue(HKEY root, const std::wstring& path, const std::wstring& name, int const& value,
                       unsigned long access);
  static bool SetValue(HKEY root, const std::wstring& path, const std::wstring& name,
                       unsigned long const& value, unsigned long access);
  static bool SetValue(HKEY root, const std::wstring& path, const std::wstring& name,
                       std::wstring const& value, unsigned long access);
  static bool SetValue(HKEY root, const std::wstring& path, const std::wstring& name, void* buffer, int size,
                       unsigned long access);
  static bool GetKeys(HKEY root, const std::wstring& path, std::vector<std::wstring>& names,
                      unsigned long access);
  static bool GetNames(HKEY root, const std::wstring& path, std::vector<std::wstring>& names,
                       unsigned long access);
  // Opens (creating) the key and deletes the value.
  static bool DelName(HKEY root, const std::wstring& path, const std::wstring& name, unsigned long access);
  // Recursive DeleteKey on a temporary.
  static bool DelKey(HKEY root, const std::wstring& path, unsigned long access);
  // Adds (quote) or removes the double quotes around QDAMainService's ImagePath.
  static void SetRegQDAServicePath(bool quote);

 protected:
  HKEY RootKey;
  HKEY CurrentKey;
  bool LazyWrite;
  std::wstring CurrentPath;
  bool CloseRootKey;
  unsigned long Access;
  int LastError;
  bool UseDeleteKeyEx;

 private:
  friend struct RegistryPeer;
  // Splits a leading root name ("HKEY_LOCAL_MACHINE\Software") off path; RootKey when none.
  HKEY FeathRootKey(std::wstring path, std::wstring& rest);
  // Closes the current key (flush unless lazy) and clears CurrentPath.
  void CloseCurrent();
  // Makes key current with the path that opened it.
  void ChangeCurrent(HKEY key, const std::wstring& path, bool relative);
  bool WriteTyped(const std::wstring& name, DWORD type, const void* data, DWORD size);
};

}  // namespace DE
