// Every file of the corpus through the whole filter, one case a file: what is offered, every frame, and
// every refusal, against the manifest. Another corpus is taken by TARVEX_CORPUS.
#include <gtest/gtest.h>

#include <memory>

#include "framework/thread.h"
#include "tests/corpus/file_check.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

const std::vector<ManifestFile>& Corpus() {
  static const std::vector<ManifestFile> files = ReadManifest(CorpusFolder());
  return files;
}

class CorpusFile : public testing::TestWithParam<std::size_t> {
 protected:
  // In a thread of its own, which is left behind when it hangs: one bad file must not hide the others.
  static std::shared_ptr<const std::vector<std::string>> CheckWithin(const ManifestFile& file, DWORD milliseconds) {
    auto differences = std::make_shared<std::vector<std::string>>();
    Thread thread;
    EXPECT_EQ(thread.Start([differences, &file] { *differences = FileCheck(file).Run(); }), S_OK);
    if (thread.JoinFor(milliseconds)) return differences;
    thread.Abandon();
    return nullptr;
  }
};

TEST_P(CorpusFile, IsReadAsTheManifestSays) {
  const ManifestFile& file = Corpus()[GetParam()];
  SCOPED_TRACE(file.name);
  const auto differences = CheckWithin(file, kPatience);
  ASSERT_TRUE(differences) << "hangs";
  for (const std::string& different : *differences) ADD_FAILURE() << different;
  EXPECT_TRUE(ModuleBecomesIdle());
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusFile, testing::Range<std::size_t>(0, Corpus().size()),
                         [](const auto& one) { return CaseName(Corpus()[one.param]); });

}  // namespace
}  // namespace tarvex::test
