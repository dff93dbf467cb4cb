#include "tests/host/host_process.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "host/system/file_handle.h"
#include "tests/support/source_dir.h"

namespace tarvex::host::test {
namespace {

constexpr DWORD kPatience = 60000;  // milliseconds
constexpr int kMostStarts = 3;

/// As the system's own rules for taking a command line apart want it.
WideString Quoted(const WideString& argument) {
  WideString text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t letter : argument) {
    if (letter == L'"') text.append(backslashes + 1, L'\\');
    backslashes = letter == L'\\' ? backslashes + 1 : 0;
    text += letter;
  }
  return text.append(backslashes, L'\\') + L"\"";
}

FileHandle InheritableFile(const WideString& path) {
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  return FileHandle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                CREATE_ALWAYS, 0, nullptr));
}

/// Wine answers ERROR_INTERNAL_ERROR, once in thousands of times, when its loader ends in the new process before
/// anything of the program is there. Nothing of mkvhost has run by then, so it is started again.
PROCESS_INFORMATION Start(WideString command, STARTUPINFOW& start) {
  for (int attempt = 1;; ++attempt) {
    PROCESS_INFORMATION created{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &created)) {
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

}  // namespace

HostResult RunHost(const std::vector<WideString>& arguments) {
  const TemporaryFolder folder;
  const WideString outputPath = folder.PathOf(L"out.txt");
  const WideString errorsPath = folder.PathOf(L"err.txt");
  WideString command = Quoted(WideFromUtf8(TARVEX_HOST_PATH));
  for (const WideString& argument : arguments) command += L" " + Quoted(argument);
  HostResult result;
  {
    const FileHandle output = InheritableFile(outputPath);
    const FileHandle errors = InheritableFile(errorsPath);
    result.code = RunToEnd(command, output.Get(), errors.Get());
  }
  result.output = ReadAll(outputPath);
  result.errors = ReadAll(errorsPath);
  return result;
}

HostResult RunHostWithModule(std::vector<WideString> arguments) {
  arguments.insert(arguments.begin() + 1, {L"--module", WideFromUtf8(TARVEX_MODULE_PATH)});
  return RunHost(arguments);
}

WideString SourcePath(const std::string& name) { return WideFromUtf8(tarvex::test::SourceDir() + "/" + name); }

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
  std::ostringstream bytes;
  if (!file || !(bytes << file.rdbuf() || file.peek() == std::ifstream::traits_type::eof())) {
    throw std::runtime_error("cannot read " + Utf8FromWide(path));
  }
  return bytes.str();
}

void WriteAll(const WideString& path, const std::string& bytes) {
  std::ofstream file(std::filesystem::path(path), std::ios::binary);
  if (!(file << bytes)) throw std::runtime_error("cannot write " + Utf8FromWide(path));
}

}  // namespace tarvex::host::test
