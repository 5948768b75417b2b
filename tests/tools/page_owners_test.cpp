/*
 * page_owners_test.cpp: whose the virtual MACs are on the page of a state folder,
 * of which the library has forgotten them: the same as on that of the
 * configuration, also where several interfaces share a MAC.
 */
#include "tools/page_run.h"

#include <gmock/gmock.h>

#include <map>
#include <utility>

namespace
{

using testing::HasSubstr;

/** Two ports, a port-channel, two VLANs and two subinterfaces with the virtual MAC of VRID 8. */
constexpr const char *SHARED_MAC = R"({
    "DEVICE_METADATA": {"localhost": {"hostname": "shared-1", "mac": "02:00:00:00:0a:01"}},
    "PORT": {"Ethernet0": {}, "Ethernet4": {}, "Ethernet8": {}, "Ethernet12": {}, "Ethernet16": {},
             "Ethernet20": {}},
    "PORTCHANNEL": {"PortChannel1": {}, "PortChannel2": {}},
    "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet8": {}, "PortChannel2|Ethernet20": {}},
    "VLAN": {"Vlan100": {"vlanid": "100"}, "Vlan101": {"vlanid": "101"},
             "Vlan200": {"vlanid": "200"}},
    "VLAN_MEMBER": {"Vlan100|Ethernet16": {"tagging_mode": "tagged"},
                    "Vlan101|Ethernet16": {"tagging_mode": "tagged"},
                    "Vlan200|Ethernet16": {"tagging_mode": "tagged"}},
    "INTERFACE": {"Ethernet0|10.0.0.1/24": {}, "Ethernet4|10.0.4.1/24": {}},
    "PORTCHANNEL_INTERFACE": {"PortChannel1|10.0.8.1/24": {}},
    "VLAN_INTERFACE": {"Vlan100|10.1.0.1/24": {}, "Vlan200|10.2.0.1/24": {}},
    "VLAN_SUB_INTERFACE": {"Ethernet12.10": {"vlan": "10"}, "Ethernet12.10|10.0.12.1/24": {},
                           "PortChannel2.20": {"vlan": "20"},
                           "PortChannel2.20|10.0.20.1/24": {}},
    "PVLAN": {"Vlan100|Vlan101": {}},
    "VRRP": {"Ethernet0|8": {"vip": ["10.0.0.2"]}, "Ethernet4|8": {"vip": ["10.0.4.2"]},
             "PortChannel1|8": {"vip": ["10.0.8.2"]}, "Vlan100|8": {"vip": ["10.1.0.2"]},
             "Vlan200|8": {"vip": ["10.2.0.2"]}, "Ethernet12.10|8": {"vip": ["10.0.12.2"]},
             "PortChannel2.20|8": {"vip": ["10.0.20.2"]}}
})";

using TitleAndOwner = std::pair<std::string, std::string>;

class PageOwners : public page_test::PageFolder
{
protected:
    PageOwners() { write("shared.json", SHARED_MAC); }

    /** Title and owner of each station of a page, by its number. */
    static std::map<std::string, TitleAndOwner> owners_on(const nlohmann::json &data)
    {
        std::map<std::string, TitleAndOwner> owners;
        for (const auto &object : data.at("objects")) {
            if (object.at("table") != "station") {
                continue;
            }
            std::string owner;
            for (const auto &field : object.at("fields")) {
                owner = field.at(0) == "of" ? field.at(1).get<std::string>() : owner;
            }
            owners[object.at("id")] = {object.at("title"), owner};
        }
        return owners;
    }
};

} // namespace

TEST_F(PageOwners, AStateFolderHasTheVirtualMacsOfItsConfiguration)
{
    const auto made = page("shared.json");
    ASSERT_EQ(made["virtual_macs"].size(), 7U);
    ASSERT_EQ(rtif("up shared.json --state kept").code, 0);
    EXPECT_EQ(page("--state kept")["virtual_macs"], made["virtual_macs"]);
}

TEST_F(PageOwners, EachStationOfASharedMacIsItsOwnInterfaces)
{
    // No frame of Ethernet12.10 meets station 8, so that no picture has it.
    const std::map<std::string, TitleAndOwner> wanted = {
        {"1", {"router MAC", ""}},
        {"2", {"virtual MAC", "Ethernet0"}},
        {"3", {"virtual MAC", "Ethernet4"}},
        {"4", {"virtual MAC", "PortChannel1"}},
        {"5", {"virtual MAC", "Vlan100"}}, // mirrored into VLAN 101
        {"6", {"virtual MAC", "Vlan100"}},
        {"7", {"virtual MAC", "Vlan200"}},
        {"9", {"virtual MAC", "PortChannel2.20"}}};
    EXPECT_EQ(owners_on(page("shared.json")), wanted);
    ASSERT_EQ(rtif("up shared.json --state kept").code, 0);
    EXPECT_EQ(owners_on(page("--state kept")), wanted);
}

TEST_F(PageOwners, AStationThatTheConfigurationDoesNotGiveIsNobodys)
{
    write("own.json", R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}},
        "INTERFACE": {"Ethernet0|10.0.0.1/24": {}, "Ethernet4|10.0.4.1/24": {}},
        "VRRP": {"Ethernet0|8": {"vip": ["10.0.0.2"]}}})");
    write("own.rtif", "up own.json\nvmac add Ethernet4 00:00:5e:00:01:08\nsave\n");
    ASSERT_EQ(rtif("run own.rtif --state kept").code, 0);
    const auto kept = page("--state kept");
    EXPECT_EQ(owners_on(kept).at("2"), TitleAndOwner("virtual MAC", "Ethernet0"));
    EXPECT_EQ(owners_on(kept).at("3"), TitleAndOwner("station", ""));
    ASSERT_EQ(kept["virtual_macs"].size(), 1U);
    EXPECT_EQ(kept["virtual_macs"][0]["where"], "station 2 in VLAN 4094");
}

TEST_F(PageOwners, AMissingStationOfASecondaryIsTold)
{
    // The secondary's station comes before the primary's own.
    write("own.rtif", "up shared.json\nvmac del Vlan100 00:00:5e:00:01:08\n"
                      "fail bcm_l2_station_add -6\nvmac add Vlan100 00:00:5e:00:01:08\n"
                      "expect message \"failed\"\n");
    ASSERT_EQ(rtif("run own.rtif --state kept").code, 0);
    EXPECT_EQ(rtif("report --state kept -o page.html").code, 1);
    EXPECT_THAT(page_test::data_of(read("page.html"))["virtual_macs"].dump(),
                HasSubstr("the chip has no station of it in VLAN 101"));
}
