#include "tests/host/host_process.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "host/system/file_handle.h"
#include "tests/support/source_dir.h"

namespace tarvex::host::test {
namespace {

constexpr DWORD kPatience = 60000;  // milliseconds
constexpr int kMostStarts = 3;

FileHandle InheritableFile(const WideString& path) {
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  return FileHandle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, 0, nullptr));
}

/// Wine answers ERROR_INTERNAL_ERROR, once in thousands of times, when its loader ends in the new process before
/// anything of the program is there. Nothing of mkvhost has run by then, so it is started again.
PROCESS_INFORMATION Start(WideString command, STARTUPINFOW& start) {
  const WideString folder = WideFromUtf8(tarvex::test::SourceDir());
  for (int attempt = 1;; ++attempt) {
    PROCESS_INFORMATION created{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &start, &created)) {
      return created;
    }
    const DWORD error = GetLastError();
    const std::string text = "mkvhost does not start: " + std::to_string(error);
    if (error != ERROR_INTERNAL_ERROR || attempt == kMostStarts) throw std::runtime_error(text);
    std::cerr << "started again: " << text << "\n";  // ./test counts these lines
  }
}

DWORD RunToEnd(const WideString& command, HANDLE output, HANDLE errors) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = output;
  start.hStdError = errors;
  const PROCESS_INFORMATION created = Start(command, start);
  const FileHandle process(created.hProcess);
  const FileHandle thread(created.hThread);
  if (WaitForSingleObject(process.Get(), kPatience) != WAIT_OBJECT_0) {
    TerminateProcess(process.Get(), 99);
    throw std::runtime_error("mkvhost does not end");
  }
  DWORD code = 0;
  GetExitCodeProcess(process.Get(), &code);
  return code;
}

WideString CommandLine(WideString arguments) {
  const std::size_t word = std::min(arguments.find(L' '), arguments.size());
  if (word != 0 && arguments.find(L"--module") == WideString::npos) {
    arguments.insert(word, L" --module " + WideFromUtf8(TARVEX_MODULE_PATH));
  }
  return WideFromUtf8(TARVEX_HOST_PATH) + L" " + arguments;
}

}  // namespace

HostResult RunHost(WideString arguments) {
  const TemporaryFolder folder;
  const WideString output = folder.PathOf(L"out.txt");
  const WideString errors = folder.PathOf(L"err.txt");
  const DWORD code =
      RunToEnd(CommandLine(std::move(arguments)), InheritableFile(output).Get(), InheritableFile(errors).Get());
  return {code, ReadAll(output), ReadAll(errors)};
}

TemporaryFolder::TemporaryFolder() {
  static int count = 0;
  const auto name = "mkvhost-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
  const auto path = std::filesystem::temp_directory_path() / name;
  std::filesystem::create_directories(path);
  m_path = path.wstring();
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ReadAll(const WideString& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + Utf8FromWide(path));
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tarvex::host::test
