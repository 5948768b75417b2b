/*
 * wire_documents_test.cpp: the transcripts of docs/wire.md, and the frames that
 * examples/ping.pcap has.
 */
#include "capture_run.h"
#include "transcripts.h"

#include <gtest/gtest.h>

namespace
{

TEST(WireDocument, TranscriptsAreTrue)
{
    const lab_test::Folder folder;
    EXPECT_EQ(lab_test::expect_transcripts(lab_test::source_path("docs/wire.md"), folder), 1);
}

TEST(WireDocument, TheExampleIsTheTestsCapture)
{
    EXPECT_EQ(lab_test::frames_of(lab_test::EXAMPLES / "ping.pcap"),
              lab_test::frames_of(lab_test::CAPTURES / "scapy.pcap"));
}

} // namespace
