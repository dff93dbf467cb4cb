// Collected log texts.
#include "tests/pins_creator/log_texts.h"

#include "framework/log.h"

namespace tarvex::test {

LogTexts::LogTexts() { SetLogSink(Take, this); }
LogTexts::~LogTexts() { SetLogSink(nullptr, nullptr); }
void LogTexts::Take(void* context, const char* text) { static_cast<LogTexts*>(context)->m_texts.emplace_back(text); }

}  // namespace tarvex::test
