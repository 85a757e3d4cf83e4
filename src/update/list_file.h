#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/handles.h"
#include "platform/sharing.h"

/// The local file that receives a list of updates. Callers create, write, close and read it in this order.
/// The processes of one session share one file in the temporary folder. A mutex locks it for one of them from
/// Create until the object ends. A process that does not get the mutex in time uses a file with another name,
/// which is deleted with the object. It waits as platform/sharing.h says.
class ListFile {
 public:
  ListFile();
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;
  ~ListFile();

  /// Creates the file, or empties it. Waits for the mutex, and while another process's handle denies access.
  /// Other processes cannot delete or rename the file until this object is destroyed. On failure returns
  /// false with the last error set.
  bool Create();
  /// Appends all bytes. On failure returns false with the last error set.
  bool Write(std::string_view bytes);
  /// Ends the writing, so that ReadNames can open the file.
  void Close();
  bool Exists() const;
  /// Appends the names of the file's sections, as far as they fit kSectionNamesCapacity characters. Waits
  /// while another process can write to the file, and denies writing while it reads. Returns false with the
  /// last error set when the file cannot be read.
  bool ReadNames(std::vector<std::wstring>& sections) const;

 private:
  const std::wstring folder_;
  platform::NamedMutex mutex_;
  std::wstring path_;
  platform::UniqueFile file_;    ///< open until Close
  platform::UniqueFile keeper_;  ///< denies deletion and renaming: the path names the created file
  bool temporary_ = false;
};
