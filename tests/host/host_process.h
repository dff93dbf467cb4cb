// One run of mkvhost.exe as its user sees it: arguments in, two streams of text and an exit code out.
#pragma once

#include <string>

#include "framework/text_conversion.h"

namespace tarvex::host::test {

struct HostResult {
  DWORD code = 0;
  std::string output;
  std::string errors;
};

/// Runs the program that was built beside this test in the checkout's folder, at most a minute. `arguments` are
/// written as in a terminal. A first word is followed by the module that was built along, which need not be
/// registered, unless the arguments name another one. Throws std::runtime_error when it cannot be started or does
/// not end.
HostResult RunHost(WideString arguments);

/// A folder for files of one test; removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  WideString PathOf(const WideString& name) const { return m_path + L"\\" + name; }

 private:
  WideString m_path;
};

/// All bytes of a file. Throws std::runtime_error.
std::string ReadAll(const WideString& path);

}  // namespace tarvex::host::test
