/*
 * hostile_files_test.cpp: configurations that nobody has written by hand: too large, too deep, with
 * too many rows, with names that would stir a terminal. Each is refused in a sentence, in little
 * memory and time.
 */
#include "config_text.h"
#include "up_run.h"

#include "config/json_tree.h"
#include "config/reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace lab_test;

namespace
{

/** "0", "1", "2", … each as an empty row. */
std::string rows(const std::string &table, std::size_t count)
{
    std::string text = "{\"" + table + "\": {";
    text.reserve(count * 14);
    for (std::size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":{}";
    }
    return text + "}}";
}

/** Lists in lists. */
std::string nested(std::size_t depth)
{
    return R"({"A": )" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

} // namespace

TEST(HostileFile, OfAHundredMegabytesIsRefused)
{
    const Folder folder;
    const auto path = folder.path / "large.json";
    std::ofstream(path) << "{}";
    std::filesystem::resize_file(path, 100'000'000);
    try {
        lab::config::read_config(path);
        FAIL() << "the file was read";
    } catch (const lab::config::UnusableFile &error) {
        EXPECT_EQ(error.what(), path.string() + ": cannot be read: it is larger than 64 MiB");
    }
}

TEST(HostileFile, NestedAHundredThousandDeepIsRefused)
{
    EXPECT_EQ(unusable(nested(100'000)),
              "leaf.json: cannot be read: objects and lists lie more than 1000 deep");
    // It ends where the limit is, whatever comes behind it.
    EXPECT_EQ(unusable("{\"A\": " + std::string(100'000, '[')),
              "leaf.json: cannot be read: objects and lists lie more than 1000 deep");
    EXPECT_EQ(unusable(nested(lab::config::JSON_DEPTH_MAX - 1)), "");
    EXPECT_NE(unusable(nested(lab::config::JSON_DEPTH_MAX)), "");
}

TEST(HostileFile, WithAMillionRowsIsRefused)
{
    // Most of the time would go into the rows before the limit: these are thrown away at once.
    const std::size_t million = 1'000'000;
    std::string values = "{\"PORT\": [[[[[[0";
    values.reserve(2 * million + 100);
    for (std::size_t i = 1; i < million; ++i) {
        values += ",0";
    }
    EXPECT_EQ(unusable(values + "]]]]]]}"),
              "leaf.json: cannot be read: it has more than 200000 values");
}

TEST(HostileFile, WithManyBadRowsTellsEachOfThem)
{
    const auto config = read(rows("VLAN", 2000));
    EXPECT_EQ(config.skipped.size(), 2000U);
    EXPECT_EQ(config.message(config.skipped.at(17)),
              "leaf.json: VLAN \"17\": \"17\" is no VLAN name like Vlan100; the row is skipped");
}

TEST(HostileFile, NamesThatStirATerminalAreShownHarmless)
{
    const auto config = read("{\"PORT\": {\"E\\u001b[2J\": {}, \"\\u202egnp\": {}, "
                             "\"\\u009b31m\": {}, \"a\\nb\": {}, \"Fenêtre\": {}}}");
    Lines told;
    for (const auto &row : config.skipped) {
        told.push_back(config.message(row));
    }
    const std::string reason = " is no port name like Ethernet4 or Ethernet-BP0; the row is "
                               "skipped";
    Lines expected;
    for (const std::string name : {R"("E\x1b[2J")", R"("Fenêtre")", R"("a\x0ab")",
                                   R"("\xc2\x9b31m")", R"("\xe2\x80\xaegnp")"}) {
        expected.push_back("leaf.json: PORT " + name + ": " + name + reason);
    }
    EXPECT_EQ(told, expected);
}

TEST(HostileFile, LongNamesAreToldByTheirBeginning)
{
    const auto config = read(R"({"VLAN": {")" + std::string(100'000, 'x') + R"(": {}}})");
    ASSERT_EQ(config.skipped.size(), 1U);
    const std::string shown = '"' + std::string(160, 'x') + "…\"";
    EXPECT_EQ(config.message(config.skipped.front()),
              "leaf.json: VLAN " + shown + ": " + shown +
                  " is no VLAN name like Vlan100; the row is skipped");
}

TEST(HostileFile, ANumberOfAMillionDigitsIsToldByItsBeginning)
{
    const std::string message = unusable(R"({"A": 1e)" + std::string(100'000, '9') + "}");
    EXPECT_LT(message.size(), 200U);
    EXPECT_TRUE(message.starts_with("leaf.json: line 1, column 100008: cannot be read as JSON: "
                                    "number overflow parsing '1e99999"))
        << message;
}

TEST(HostileFile, ATunnelsNameIsShort)
{
    const std::string tunnel = R"({"tunnel_type": "IPINIP", "dst_ip": "10.0.0.1"})";
    for (const std::string &name : {std::string(64, 'x'), std::string("a\\u0007")}) {
        EXPECT_EQ(read(R"({"TUNNEL": {")" + name + "\": " + tunnel + "}}").skipped.size(), 1U);
    }
    EXPECT_TRUE(
        read(R"({"TUNNEL": {")" + std::string(63, 'x') + "\": " + tunnel + "}}").skipped.empty());
}

namespace
{

using HostileUp = UpTest;

} // namespace

TEST_F(HostileUp, AHostNameStirsNoTerminal)
{
    simswitch::Switch hardware;
    run(hardware, R"({"DEVICE_METADATA": {"localhost": {"hostname": "a\u001b]0;b\u0007"}}})");
    EXPECT_EQ(text.find('\x1b'), std::string::npos) << text;
    EXPECT_TRUE(text.starts_with("leaf.json: a\\x1b]0;b\\x07, Trident")) << text;
}

TEST_F(HostileUp, JsonForMachinesIsPlainText)
{
    simswitch::Switch hardware;
    run_json(hardware, R"({"PORT": {"Ethernet\u009b": {}, "Fenêtre": {}}})");
    EXPECT_EQ(text.find('\x9b'), std::string::npos) << text;
    EXPECT_NE(text.find("\\u009b"), std::string::npos) << text;
    EXPECT_EQ(object["skipped"][0]["row"], "Ethernet\u009b") << object["skipped"].dump();
}
