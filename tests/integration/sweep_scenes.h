#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/machine.h"

namespace sweep {

/// What a scene left behind, for the rules to judge.
struct Outcome {
  std::wstring said;   ///< its log entries and messages; what changes with the clock is left out
  std::wstring state;  ///< everything else that must be as in a run without failures
  bool operator==(const Outcome&) const = default;
};

using Files = std::map<std::wstring, std::string>;  ///< path below the machine's folder, content

struct Scene {
  char letter;  ///< by which the rules name it
  const char* name;
  void (*arrange)(support::Machine&);  ///< on top of what every scene finds
  Outcome (*act)(support::Machine&);
  std::vector<std::wstring> owns;  ///< ends of the paths that it may change
  /// What holds whatever fails; the complaint, empty without one.
  std::string (*judge)(const Outcome&, const Files& before, const Files& after);
};

const std::vector<Scene>& Scenes();
/// What every scene finds: settings, a registered product with its executable, logs, and strangers' files.
void Furnish(support::Machine& machine);
/// The update list that the scenes' server serves.
inline constexpr char kServedList[] = "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n";

}  // namespace sweep
