/*
 * sqlite_text_test.cpp: what a damaged database says of itself, in messages.
 */
#include "services/sqlite.h"
#include "state/folder.h"
#include "state_dir.h"
#include "switch.h"

#include <gtest/gtest.h>

#include <string>

using simswitch::services::sqlite::printable;

TEST(SqliteText, IsOneLineOfPrintableCharacters)
{
    EXPECT_EQ(printable("unrecognized token: \"\x15\"\nin tree"),
              "unrecognized token: \"?\"?in tree");
    EXPECT_EQ(printable("\x1b[2J\xff\x7f~ "), "?[2J??~ ");
    EXPECT_EQ(printable(""), "");
}

TEST(SqliteText, ADamagedFilePutsNothingOfItselfIntoTheRefusal)
{
    const simswitch::StateDir dir;
    {
        const simswitch::Switch hardware({.state_dir = dir.path()});
    }
    dir.sql("chip.db", "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = 'CREATE TABLE "
                       "meta(' || char(27) || '[2J)' WHERE name = 'meta'");
    try {
        const simswitch::Switch hardware({.state_dir = dir.path()});
        FAIL() << "the folder was taken";
    } catch (const simswitch::state::Error &error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("malformed database schema (meta)"), std::string::npos) << text;
        EXPECT_EQ(printable(text), text);
    }
}
