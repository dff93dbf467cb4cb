// One run of mkvhost.exe as its user sees it: arguments in, two streams of text and an exit code out.
#pragma once

#include <string>
#include <vector>

#include "framework/text_conversion.h"

namespace tarvex::host::test {

struct HostResult {
  DWORD code = 0;
  std::string output;
  std::string errors;
};

/// Runs the program that was built beside this test, at most a minute. Throws std::runtime_error when it
/// cannot be started or does not end.
HostResult RunHost(const std::vector<WideString>& arguments);

/// The same, with the module that was built along: it need not be registered.
HostResult RunHostWithModule(std::vector<WideString> arguments);

/// A file of the repository.
WideString SourcePath(const std::string& name);

/// A folder for files of one test; emptied and removed at the end.
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
void WriteAll(const WideString& path, const std::string& bytes);

}  // namespace tarvex::host::test
