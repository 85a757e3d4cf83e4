#include "update/list_file.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/profile.h"
#include "text/text.h"
#include "update/section_names.h"
#include "version.h"

using platform::OpenShared;

namespace {

constexpr wchar_t kSharedName[] = L"updates.ini";
constexpr wchar_t kMutex[] = L"Local\\" TAVREL_PREFIX "_TavrelUtility_UpdatesFile";

// No other running process uses this name. A file of an earlier process with the same number is overwritten.
std::wstring PrivateName() {
  return L"updates-" + text::FormatDecimal(GetCurrentProcessId()) + L".ini";
}

}  // namespace

ListFile::ListFile() : folder_(platform::TemporaryFolder()), mutex_(kMutex) {}

ListFile::~ListFile() {
  file_.reset();
  keeper_.reset();
  if (temporary_) DeleteFileW(path_.c_str());
}

bool ListFile::Create() {
  mutex_.Take();
  // Without a temporary folder the path stays empty and the call fails; the current folder is never used.
  if (!folder_.empty()) path_ = folder_ + (mutex_.IsHeld() ? kSharedName : PrivateName());
  constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
  file_ = OpenShared(path_, GENERIC_WRITE, share, CREATE_ALWAYS);
  temporary_ = file_ && !mutex_.IsHeld();
  if (file_) keeper_ = OpenShared(path_, GENERIC_READ, share);
  return static_cast<bool>(keeper_);
}

bool ListFile::Write(std::string_view bytes) {
  return platform::WriteAll(file_.get(), bytes);
}

void ListFile::Close() {
  file_.reset();
}

bool ListFile::Exists() const {
  return platform::FileExists(path_);
}

bool ListFile::ReadNames(std::vector<std::wstring>& sections) const {
  // A file that cannot be opened reads as an empty list, so open it first. The handle also keeps writers out.
  const platform::UniqueFile guard = OpenShared(path_, GENERIC_READ, FILE_SHARE_READ);
  if (!guard) return false;
  AppendSectionNames(platform::ReadProfileSectionNames(path_, kSectionNamesCapacity), sections);
  return true;
}
