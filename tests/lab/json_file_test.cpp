/*
 * json_file_test.cpp: files that can't be used, keys that stand twice, and the
 * two forms of a configuration.
 */
#include "config_text.h"

#include <gtest/gtest.h>

using namespace lab_test;

namespace
{

constexpr std::string_view DEVICE =
    R"("DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:00:09"}})";

/** A configuration with a device MAC. */
std::string with_device(const std::string &tables)
{
    return "{" + std::string(DEVICE) + ", " + tables + "}";
}

} // namespace

TEST(UnusableFile, EmptyFile)
{
    EXPECT_EQ(unusable(""), "leaf.json: the file is empty; a JSON object was expected");
    EXPECT_EQ(unusable(" \n\t"), "leaf.json: the file is empty; a JSON object was expected");
}

TEST(UnusableFile, RootOfAnotherKind)
{
    EXPECT_EQ(unusable("[]"), "leaf.json: an object of tables was expected, not a list");
    EXPECT_EQ(unusable("5"), "leaf.json: an object of tables was expected, not a number");
    EXPECT_EQ(unusable("null"), "leaf.json: an object of tables was expected, not null");
}

TEST(UnusableFile, TruncatedFileTellsThePlace)
{
    EXPECT_EQ(unusable("{\"PORT\": {\n  \"Ethernet0\": {"),
              "leaf.json: line 2, column 17: cannot be read as JSON: unexpected end of input");
}

TEST(UnusableFile, TextBehindTheObject)
{
    EXPECT_EQ(unusable("{} {}"), "leaf.json: line 1, column 4: cannot be read as JSON: unexpected "
                                 "'{'");
}

TEST(UnusableFile, NoUtf8AndNoByteOfItInTheMessage)
{
    EXPECT_EQ(unusable("{\"Eth\xff\": 1}"), "leaf.json: line 1, column 6: cannot be read as JSON: "
                                            "invalid string: ill-formed UTF-8 byte");
}

TEST(UnusableFile, NumberBeyondAllNumbers)
{
    EXPECT_EQ(unusable("{\"A\": 1e999}"), "leaf.json: line 1, column 11: cannot be read as JSON: "
                                          "number overflow parsing '1e999'");
}

TEST(UnusableFile, TableOfAnotherKind)
{
    EXPECT_EQ(unusable(R"({"PORT": []})"),
              "leaf.json: PORT: an object of rows was expected, not a list");
    EXPECT_EQ(unusable(R"({"VRF": "x"})"),
              "leaf.json: VRF: an object of rows was expected, not a text");
}

TEST(UnusableFile, OtherTablesMayBeOfAnyKind)
{
    EXPECT_EQ(unusable(R"({"CONFIG_DB_INITIALIZED": "1", "QUEUE": [1, {"a": []}]})"), "");
}

TEST(UnusableFile, MissingFile)
{
    try {
        lab::config::read_config("/nowhere/leaf.json");
        FAIL() << "the file was read";
    } catch (const lab::config::UnusableFile &error) {
        EXPECT_STREQ(error.what(), "/nowhere/leaf.json: cannot be read: No such file or directory");
    }
}

TEST(UnusableFile, FolderInPlaceOfAFile)
{
    EXPECT_THROW(lab::config::read_config("/"), lab::config::UnusableFile);
}

TEST(DuplicateKeys, FieldOfARowLastOneCounts)
{
    const auto config =
        read(with_device(R"("PORT": {"Ethernet0": {"mtu": "9100", "mtu": "9000"}})"));
    EXPECT_EQ(config.notes, Lines{"leaf.json: PORT \"Ethernet0\": the key \"mtu\" stands twice; "
                                  "the last one counts"});
    EXPECT_EQ(config.ports.at("Ethernet0").mtu, 9000);
}

TEST(DuplicateKeys, RowLastOneCounts)
{
    const auto config = read(
        with_device(R"("PORT": {"Ethernet0": {"mtu": "9100"}, "Ethernet0": {"mtu": "1600"}})"));
    EXPECT_EQ(config.notes,
              Lines{"leaf.json: PORT \"Ethernet0\": the row stands twice; the last one counts"});
    EXPECT_EQ(config.ports.at("Ethernet0").mtu, 1600);
}

TEST(DuplicateKeys, FlatRowAndItsField)
{
    const auto config = read(with_device(
        R"("PORT|Ethernet0": {"mtu": "1"}, "PORT|Ethernet0": {"mtu": "2000", "mtu": "2001"})"));
    EXPECT_EQ(config.notes,
              (Lines{"leaf.json: PORT \"Ethernet0\": the key \"mtu\" stands twice; the last one "
                     "counts",
                     "leaf.json: PORT \"Ethernet0\": the row stands twice; the last one counts"}));
    EXPECT_EQ(config.ports.at("Ethernet0").mtu, 2001);
}

TEST(DuplicateKeys, FieldOfAWrappedRow)
{
    const auto config = read(with_device(
        R"("PORT|Ethernet0": {"type": "hash", "value": {"mtu": "2000", "mtu": "2001"}})"));
    EXPECT_EQ(config.notes, Lines{"leaf.json: PORT \"Ethernet0\": the key \"mtu\" stands twice; "
                                  "the last one counts"});
}

TEST(DuplicateKeys, SameRowInBothForms)
{
    const auto config = read(with_device(
        R"("PORT|Ethernet0": {"mtu": "2000"}, "PORT": {"Ethernet0": {"mtu": "3000"}})"));
    EXPECT_EQ(config.notes,
              Lines{"leaf.json: PORT \"Ethernet0\": the row stands twice; the last one counts"});
    EXPECT_EQ(config.ports.at("Ethernet0").mtu, 3000);
}

TEST(DuplicateKeys, WholeTable)
{
    const auto config =
        read(with_device(R"("PORT": {"Ethernet0": {}}, "PORT": {"Ethernet4": {}})"));
    EXPECT_EQ(config.notes, Lines{"leaf.json: the table \"PORT\" stands twice; the last one "
                                  "counts"});
    EXPECT_FALSE(config.ports.contains("Ethernet0"));
    EXPECT_TRUE(config.ports.contains("Ethernet4"));
}

namespace
{

constexpr std::string_view NESTED = R"({
  "DEVICE_METADATA": {"localhost": {"hostname": "leaf1", "mac": "02:00:00:00:00:09"}},
  "PORT": {"Ethernet0": {"mtu": "9100"}, "Ethernet4": {"mtu": "1600"}},
  "VRF": {"Vrf_blue": {}},
  "INTERFACE": {"Ethernet4|fc00::1/126": {}, "Ethernet4": {"vrf_name": "Vrf_blue"},
                "Ethernet0|10.0.0.1/31": {"NULL": "NULL"}},
  "TUNNEL": {"T": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.1"}}})";

constexpr std::string_view FLAT = R"({
  "DEVICE_METADATA|localhost": {"hostname": "leaf1", "mac": "02:00:00:00:00:09"},
  "PORT|Ethernet0": {"mtu": 9100}, "PORT|Ethernet4": {"mtu": "1600"},
  "VRF|Vrf_blue": {"NULL": "NULL"},
  "INTERFACE|Ethernet4": {"vrf_name": "Vrf_blue"}, "INTERFACE|Ethernet4|FC00::1/126": {},
  "INTERFACE|Ethernet0|10.0.0.1/31": {},
  "TUNNEL|T": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.1"}})";

/** A flat form as a dump of the database writes it. */
std::string wrapped(std::string_view value)
{
    return R"({"expireat": 1602451533.23, "ttl": -0.001, "type": "hash", "value": )" +
           std::string(value) + "}";
}

/** All that a description says, as text. */
std::string told(const lab::config::Description &config)
{
    std::string text = config.hostname + " " + lab::config::mac_text(config.device_mac) + "\n";
    for (const auto &[name, port] : config.ports) {
        text += name + " " + std::to_string(port.chip_port) + " " + std::to_string(port.mtu) + "\n";
    }
    for (const auto &interface : config.interfaces) {
        text += interface.table + " " + interface.name + " vrf " + std::to_string(interface.vrf);
        for (const auto &prefix : interface.addresses) {
            text += " " + prefix.address.text() + "/" + std::to_string(prefix.length);
        }
        text += "\n";
    }
    for (const auto &tunnel : config.tunnels) {
        text += "tunnel " + tunnel.name + " " + tunnel.destination.text() + "\n";
    }
    return text;
}

} // namespace

TEST(BothForms, SayTheSame)
{
    EXPECT_EQ(told(read(NESTED)), "leaf1 02:00:00:00:00:09\n"
                                  "Ethernet0 1 9100\n"
                                  "Ethernet4 2 1600\n"
                                  "INTERFACE Ethernet0 vrf 1 10.0.0.1/31\n"
                                  "INTERFACE Ethernet4 vrf 2 fc00::1/126\n"
                                  "tunnel T 10.1.0.1\n");
    EXPECT_EQ(told(read(FLAT)), told(read(NESTED)));
    EXPECT_EQ(messages(read(FLAT)), Lines{});
}

TEST(BothForms, WrappedRowsSayTheSame)
{
    const std::string text =
        R"({"DEVICE_METADATA|localhost": )" +
        wrapped(R"({"hostname": "leaf1", "mac": "02:00:00:00:00:09"})") +
        R"(, "PORT|Ethernet0": )" + wrapped(R"({"mtu": "9100"})") + R"(, "PORT|Ethernet4": )" +
        wrapped(R"({"mtu": "1600"})") + R"(, "VRF|Vrf_blue": )" + wrapped(R"({"NULL": "NULL"})") +
        R"(, "INTERFACE|Ethernet4": )" + wrapped(R"({"vrf_name": "Vrf_blue"})") +
        R"(, "INTERFACE|Ethernet4|FC00::1/126": )" + wrapped(R"({"NULL": "NULL"})") +
        R"(, "INTERFACE|Ethernet0|10.0.0.1/31": )" + wrapped(R"({"NULL": "NULL"})") +
        R"(, "TUNNEL|T": )" + wrapped(R"({"tunnel_type": "IPINIP", "dst_ip": "10.1.0.1"})") + "}";
    EXPECT_EQ(told(read(text)), told(read(NESTED)));
}

TEST(BothForms, WrappedTextIsNoRow)
{
    const auto config =
        read(with_device(R"("PORT|Ethernet0": {"expireat": 1.5, "type": "string", "value": "1"})"));
    EXPECT_EQ(messages(config), Lines{"leaf.json: PORT \"Ethernet0\": an object of fields was "
                                      "expected, not a text; the row is skipped"});
}
