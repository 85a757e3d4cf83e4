#include "ui/launch_parameters.h"

std::wstring LaunchParameters(std::wstring_view file) {
  std::wstring parameters = L"/c \"";
  parameters += file;
  parameters += L" /update\"";
  return parameters;
}
