// Collects what is logged while it lives. One at a time; the tests here log on one thread.
#pragma once

#include <string>
#include <vector>

namespace tarvex::test {

class LogTexts {
 public:
  LogTexts();
  ~LogTexts();
  LogTexts(const LogTexts&) = delete;
  LogTexts& operator=(const LogTexts&) = delete;

  const std::vector<std::string>& Texts() const { return m_texts; }

 private:
  static void Take(void* context, const char* text);

  std::vector<std::string> m_texts;
};

}  // namespace tarvex::test
