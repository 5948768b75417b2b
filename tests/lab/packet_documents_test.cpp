/*
 * packet_documents_test.cpp: the transcripts of README.md and docs/packets.md
 * are what the command prints.
 */
#include "transcripts.h"

#include <gtest/gtest.h>

namespace lab_test
{

namespace
{

TEST(PacketDocuments, ReadmeShowsWhatTheCommandPrints)
{
    const Folder folder;
    EXPECT_EQ(expect_transcripts(source_path("README.md"), folder), 3);
}

TEST(PacketDocuments, PacketsPageShowsWhatTheCommandPrints)
{
    const Folder folder;
    EXPECT_GE(expect_transcripts(source_path("docs/packets.md"), folder), 1);
}

} // namespace

} // namespace lab_test
