#pragma once

#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/shared_turn.h"

/// The local file that a list of updates is fetched into. Utilities of one session share a file of the
/// temporary folder: it is one's own from its creation until this object ends. Whoever cannot have his turn
/// at it in time works with a file of another name, which goes away with this object.
class ListFile {
 public:
  ListFile();
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;
  ~ListFile();

  /// Waits for the turn, a second at most, and makes the file anew; false with the last error set.
  platform::UniqueFile Create();
  bool Exists() const;
  /// Appends the names of the file's sections, as far as they fit the buffer of the program.
  void ReadNames(std::vector<std::wstring>& sections) const;

 private:
  const std::wstring folder_;
  platform::SharedTurn turn_;
  std::wstring path_;
  bool goes_away_ = false;
};
