// SPDX-License-Identifier: Apache-2.0
// Every call of the system that writing a report makes, failing once.
#include "kit/posix/call_sweep.h"
#include "testkit/temp_tree.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/formats/KazDocWriter.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

class DocumentCalls : public testing::Test, protected kit::CallSweep {};

TEST_F(DocumentCalls, AReportIsWholeOrAsBefore) {
    const moxkit::TempTree tree;
    const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(doc_html));
    doc->paragraph(std::string(100000, 'x').c_str());
    const std::string expected = doc->finish().getValue();
    const std::string path = tree.native("report");
    bool isThrown = false;
    sweep([&] { tree.write("report", "old"); },
          [&] {
              isThrown = false;
              try {
                  doc->write(path.c_str());
              } catch (const KazFileException&) {
                  isThrown = true;
              }
          },
          [&](bool harmless) {
              const std::string now = tree.read("report");
              EXPECT_TRUE(now == expected || now == "old");
              EXPECT_TRUE(isThrown || now == expected);
              EXPECT_FALSE(isThrown && harmless);
          });
}

} // namespace
