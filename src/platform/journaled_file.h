#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/named_mutex.h"

namespace platform {

/// A small file that several processes read and rewrite in its place, so that its owner, rights and links
/// stay. For as long as one of them has such an object, the others wait for theirs.
///
/// While the file is rewritten its old bytes are kept beside it, in a journal "NAME.PROCESS-TICKS.journal"
/// that its writer keeps open. What a writer that was ended left behind is put right by the next object.
///
///   ended while                  | file      | journal  | the next object
///   the journal is written       | old       | torn     | removes the journal
///   the file is rewritten        | anything  | whole    | puts the old bytes back, removes the journal
///   a new file is copied         | beginning | whole    | removes both
///   a new file is rewritten      | beginning | whole    | removes the journal, and the file if it is empty
///   the journal is to be removed | new       | whole    | puts old bytes back; leaves what is new; removes
///                                |           |          | the journal
///
/// A file that is another one by now, or was written a minute or more after its journal, is left as it is. A
/// journal whose bytes cannot be put back stays for the next object. Files that no writer of this kind made
/// are left alone, whatever their name.
class JournaledFile {
 public:
  /// Waits for the turn, a second at most, and puts the file right. Who waited in vain goes on: to read, and
  /// to rewrite unless a journal says that it is being rewritten or still to be put right.
  explicit JournaledFile(const std::wstring& path);

  /// Calls `write` with the file's bytes, which rewrites the file or makes a new one, and answers what it
  /// answers, with its last error. After a failure the file is what it was; of one that was missing a
  /// beginning may stay, which nothing tells from somebody else's file. `write` is not called, and the answer
  /// is false, while another journal is left or made at the same moment, and when the file's bytes cannot be
  /// kept because it cannot be read or the disk is full. Where no other file may be made `write` is called
  /// all the same.
  bool Rewrite(const std::function<bool(std::string_view before)>& write);
  /// Copies `source` over the file; false, with the last error, for a reason that a plain copy would fail
  /// for as well. After a failure the file is what it was, or missing as it was, unless a journal was left:
  /// the copy is a plain one then.
  bool CopyFrom(const std::wstring& source);

 private:
  const std::wstring path_;
  NamedMutex turn_;
  bool writable_;  ///< no journal is left: nobody rewrites the file, and it is whole
};

}  // namespace platform
