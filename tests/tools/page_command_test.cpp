/*
 * page_command_test.cpp: `rtif report` as a process: what its page holds, beside
 * what `rtif up` prints, and what it refuses.
 */
#include "tools/page_run.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace
{

using page_test::calls_of;
using page_test::data_of;
using page_test::EXAMPLES;
using testing::HasSubstr;
using testing::StartsWith;
using PageCommand = page_test::PageFolder;

/** A message as a page has it: on one line, each gap a space. */
std::string page_line(const std::string &text)
{
    std::string line;
    for (const char letter : text) {
        const bool blank = letter == '\n' || letter == ' ';
        if (!blank || (!line.empty() && line.back() != ' ')) {
            line += blank ? ' ' : letter;
        }
    }
    return line.ends_with(' ') ? line.substr(0, line.size() - 1) : line;
}

std::vector<std::string> page_messages(const nlohmann::json &data, const nlohmann::json &requests)
{
    std::vector<std::string> texts;
    for (const auto &request : requests) {
        for (const int item : request.at("items")) {
            if (item < 0) {
                texts.push_back(data["messages"][static_cast<std::size_t>(-item - 1)][2]);
            }
        }
    }
    return texts;
}

/** The bytes of all files of a folder, by name. */
std::map<std::string, std::string> page_files_of(const std::filesystem::path &folder)
{
    std::map<std::string, std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream in(entry.path(), std::ios::binary);
        files[entry.path().filename()] = {std::istreambuf_iterator<char>(in), {}};
    }
    return files;
}

constexpr const char *HOSTILE = R"({
    "DEVICE_METADATA": {"localhost": {
        "hostname": "</script><script>alert(1)</script>\u2028<!--<img src=x onerror=alert(2)>",
        "mac": "02:00:00:00:0a:01"}},
    "PORT": {"Ethernet0": {"lanes": "0", "index": "0"}},
    "INTERFACE": {"Ethernet0": {}, "</script><b>\u001b[2J\u202e": {}}
})";

} // namespace

TEST_F(PageCommand, EveryInterfaceIsThereWithWhatTheChipHoldsOfIt)
{
    const auto data = page(EXAMPLES + "everything.json");
    const auto up = nlohmann::json::parse(rtif("up " + EXAMPLES + "everything.json --json").out);
    ASSERT_EQ(data["interfaces"].size(), up["interfaces"].size());
    for (std::size_t i = 0; i < up["interfaces"].size(); ++i) {
        const auto &one = data["interfaces"][i];
        const auto &wanted = up["interfaces"][i];
        SCOPED_TRACE(wanted["name"].get<std::string>());
        for (const char *field : {"name", "kind", "ifindex", "iif", "vlan", "vrf", "mtu",
                                  "families", "code", "calls"}) {
            EXPECT_EQ(one[field], wanted[field]) << field;
        }
        EXPECT_EQ(one["state"], wanted["result"]);
        EXPECT_EQ(one["ports"].size(), wanted["ports"].size());
    }
    EXPECT_EQ(data["host"], "everything-1");
    EXPECT_EQ(data["calls"], up["totals"]["calls"]);
    EXPECT_EQ(data["virtual_macs"].size(), up["virtual_macs"].size());
    EXPECT_EQ(data["pairs"].size(), up["private_vlan_pairs"].size());
}

TEST_F(PageCommand, CallsAndMessagesAreThoseOfUp)
{
    for (const char *chip : {"trident", "trident2"}) {
        const std::string words = fmt::format("{}everything.json --chip {}", EXAMPLES, chip);
        const auto data = page(words);
        const auto up = nlohmann::json::parse(rtif("up " + words + " --calls --trace --json").out);
        ASSERT_EQ(data["interfaces"].size(), up["interfaces"].size());
        for (std::size_t i = 0; i < up["interfaces"].size(); ++i) {
            const auto &requests = data["interfaces"][i]["requests"];
            const auto &wanted = up["interfaces"][i];
            SCOPED_TRACE(wanted["name"].get<std::string>());
            EXPECT_EQ(calls_of(data, requests), wanted["call_list"]);
            std::vector<std::string> messages;
            for (const auto &message : wanted["trace"]) {
                messages.push_back(page_line(message["text"]));
            }
            EXPECT_EQ(page_messages(data, requests), messages);
        }
        const auto &router_mac = data["switch_requests"][0];
        EXPECT_THAT(router_mac["asked"].get<std::string>(), StartsWith("add router MAC"));
        EXPECT_EQ(calls_of(data, nlohmann::json::array({router_mac})),
                  up["router_mac"]["call_list"]);
    }
}

TEST_F(PageCommand, RequestsOfVirtualMacsAndPairsStandWithTheirInterface)
{
    const auto data = page(EXAMPLES + "campus.json");
    const auto up =
        nlohmann::json::parse(rtif("up " + EXAMPLES + "campus.json --calls --json").out);
    std::map<std::string, std::vector<std::string>> wanted;
    for (const auto &mac : up["virtual_macs"]) {
        auto &calls = wanted[mac["interface"]];
        calls.insert(calls.end(), mac["call_list"].begin(), mac["call_list"].end());
    }
    ASSERT_EQ(up["virtual_macs"].size(), 50U);
    for (const auto &one : data["interfaces"]) {
        nlohmann::json macs = nlohmann::json::array();
        for (const auto &request : one["others"]) {
            if (request["asked"].get<std::string>().starts_with("add virtual MAC")) {
                macs.push_back(request);
            }
        }
        EXPECT_EQ(calls_of(data, macs), wanted[one["name"]]) << one["name"];
    }
}

TEST_F(PageCommand, HostileNamesStayData)
{
    write("hostile.json", HOSTILE);
    const auto data = page("hostile.json");
    EXPECT_EQ(data["host"], "</script><script>alert(1)</script>\\xe2\\x80\\xa8"
                            "<!--<img src=x onerror=alert(2)>");
    ASSERT_EQ(data["skipped"].size(), 1U);
    EXPECT_EQ(data["skipped"][0]["row"], "</script><b>\\x1b[2J\\xe2\\x80\\xae");

    const std::string document = read("page.html");
    EXPECT_THAT(document, Not(HasSubstr("alert(1)</script>")));
    EXPECT_THAT(document, Not(HasSubstr("<img")));
    EXPECT_THAT(document, Not(HasSubstr("<!--")));
    EXPECT_EQ(document.find('\x1b'), std::string::npos);
    EXPECT_EQ(document.find("\xe2\x80\xa8"), std::string::npos);
}

TEST_F(PageCommand, TwoRunsPrintTheSameBytes)
{
    page(EXAMPLES + "everything.json");
    const std::string first = read("page.html");
    page(EXAMPLES + "everything.json");
    EXPECT_EQ(first, read("page.html"));
    EXPECT_GT(first.size(), 100000U);
}

TEST_F(PageCommand, NothingOfThePageIsElsewhere)
{
    page(EXAMPLES + "kinds.json");
    const std::string document = read("page.html");
    for (const char *word : {" src=", "@import", "url(", "fetch(", "XMLHttpRequest", "innerHTML"}) {
        EXPECT_THAT(document, Not(HasSubstr(word)));
    }
    EXPECT_THAT(document, HasSubstr("default-src 'none'"));
}

TEST_F(PageCommand, StateFolderIsShownAndStaysAsItIs)
{
    ASSERT_EQ(rtif("up " + EXAMPLES + "everything.json --state kept").code, 0);
    const auto before = page_files_of(folder / "kept");
    const auto data = page("--state kept");
    EXPECT_EQ(page_files_of(folder / "kept"), before);

    const auto up = nlohmann::json::parse(rtif("up " + EXAMPLES + "everything.json --json").out);
    EXPECT_EQ(data["from_state"], true);
    EXPECT_EQ(data["source"], "kept");
    EXPECT_EQ(data["host"], "everything-1");
    ASSERT_EQ(data["interfaces"].size(), up["interfaces"].size());
    for (std::size_t i = 0; i < up["interfaces"].size(); ++i) {
        const auto &one = data["interfaces"][i];
        const auto &wanted = up["interfaces"][i];
        SCOPED_TRACE(wanted["name"].get<std::string>());
        for (const char *field : {"name", "kind", "iif", "vlan", "vrf", "mtu", "families"}) {
            EXPECT_EQ(one[field], wanted[field]) << field;
        }
        EXPECT_EQ(one["state"], "up");
        EXPECT_FALSE(one.contains("requests"));
        EXPECT_FALSE(one.contains("code"));
    }
    EXPECT_TRUE(data["call_lines"].empty());
}

TEST_F(PageCommand, StateFolderWithoutItsConfigurationIsShownByTheStore)
{
    ASSERT_EQ(rtif("up " + EXAMPLES + "kinds.json --chip trident2 --state kept").code, 0);
    std::filesystem::remove(folder / "kept" / "config.json");
    const auto data = page("--state kept");
    EXPECT_EQ(data["chip"], "Trident2");
    EXPECT_EQ(data["host"], "");
    std::set<int> numbers;
    for (const auto &one : data["interfaces"]) {
        numbers.insert(one["iif"].get<int>());
    }
    EXPECT_TRUE(numbers.contains(3));
    EXPECT_TRUE(numbers.contains(9));
    EXPECT_THAT(data["notes"].dump(), HasSubstr("kept: has no config.json"));
}

TEST_F(PageCommand, StateFolderShowsVirtualMacsAndPairsThatTheChipHas)
{
    const std::string config = EXAMPLES + "everything.json";
    ASSERT_EQ(rtif("up " + config + " --state kept").code, 0);
    const auto kept = page("--state kept");
    const auto made = page(config);
    ASSERT_GT(made["virtual_macs"].size(), 3U);
    ASSERT_EQ(kept["virtual_macs"].size(), made["virtual_macs"].size());
    for (std::size_t i = 0; i < made["virtual_macs"].size(); ++i) {
        EXPECT_EQ(kept["virtual_macs"][i]["what"], made["virtual_macs"][i]["what"]);
        EXPECT_EQ(kept["virtual_macs"][i]["owner"], made["virtual_macs"][i]["owner"]);
        EXPECT_THAT(kept["virtual_macs"][i]["where"].get<std::string>(), StartsWith("station "));
        EXPECT_EQ(kept["virtual_macs"][i]["error"], "");
    }
    EXPECT_EQ(kept["pairs"], made["pairs"]);
}

TEST_F(PageCommand, VirtualMacThatTheChipLacksIsToldOfAStateFolder)
{
    const std::string config = EXAMPLES + "packets.json";
    write("failing.rtif", "fail bcm_l2_station_add 2 -6\nup " + config + "\n");
    rtif("run failing.rtif --state kept");
    EXPECT_EQ(rtif("report --state kept -o page.html").code, 1);
    EXPECT_THAT(data_of(read("page.html"))["virtual_macs"].dump(),
                HasSubstr("the chip has no station of it"));
}

TEST_F(PageCommand, WhatIsNotUpInAStateFolderIsToldAndRefused)
{
    write("half.rtif", "fail rtifhal_bcm_l3_ingress_create -6\nup " + EXAMPLES + "kinds.json\n");
    rtif("run half.rtif --state kept");
    const auto run = rtif("report --state kept -o page.html");
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.out, StartsWith("page.html: 7 interfaces, 6 up, 1 not; "));
    const auto data = data_of(read("page.html"));
    EXPECT_EQ(data["interfaces"][0]["name"], "Ethernet0");
    EXPECT_NE(data["interfaces"][0]["state"], "up");
    EXPECT_EQ(data["interfaces"][0]["error"], "the chip has no L3 ingress object 3");
    EXPECT_EQ(data["interfaces"][1]["state"], "up");
}

TEST_F(PageCommand, CallsBeyondTheLimitAreLeftOutAndTold)
{
    const auto run = rtif("report " + EXAMPLES + "kinds.json --calls 180 -o page.html");
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("the calls of 5 interfaces are left out: the page holds 180 "
                                   "calls; --calls takes another number"));
    const auto data = data_of(read("page.html"));
    EXPECT_EQ(data["without_calls"], 5);
    EXPECT_EQ(data["call_limit"], 180);
    // 91 and 83 calls are within the limit; the port-channel's 197 aren't, nor what follows.
    EXPECT_TRUE(data["interfaces"][1]["requests"][0].contains("items"));
    EXPECT_FALSE(data["interfaces"][2]["requests"][0].contains("items"));
    EXPECT_FALSE(data["interfaces"][6]["requests"][0].contains("items"));
    EXPECT_EQ(data["interfaces"][2]["calls"], 197);
}

TEST_F(PageCommand, WordsThatMakeNoSenseAreUsage)
{
    const std::string kinds = EXAMPLES + "kinds.json";
    for (const auto &words :
         std::vector<std::string>{"report -o page.html", "report " + kinds,
                                  "report " + kinds + " --state kept -o page.html",
                                  "report --state kept --chip trident -o page.html",
                                  "report " + kinds + " --calls many -o page.html"}) {
        const auto run = rtif(words);
        EXPECT_EQ(run.code, 2) << words;
        EXPECT_NE(run.err, "") << words;
    }
    EXPECT_THAT(rtif("report -o page.html").err, HasSubstr("CONFIG.json, or --state DIR,"));
    for (const std::string word :
         {"-1", "many", "99999999999999999999999", "1000000001", "5x", "''"}) {
        const auto run = rtif("report " + kinds + " --calls " + word + " -o page.html");
        EXPECT_EQ(run.code, 2) << word;
        EXPECT_THAT(run.err, HasSubstr(" is no number of calls; 0 to 1000000000 are taken"));
    }
    const auto nameless = rtif("report " + kinds + " -o ''");
    EXPECT_EQ(nameless.code, 2);
    EXPECT_THAT(nameless.err, HasSubstr("--out: is empty; name a file for the page"));
    EXPECT_FALSE(std::filesystem::exists(folder / "page.html"));
}

TEST_F(PageCommand, WhatCannotBeReadOrWrittenIsRefusedInWords)
{
    const std::string kinds = EXAMPLES + "kinds.json";
    std::filesystem::create_directory(folder / "empty");
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"report none.json -o page.html", "none.json"},
        {"report --state none -o page.html", "none: is no folder"},
        {"report --state empty -o page.html", "empty: holds no state of a switch"},
        {"report " + kinds + " -o empty", "empty: is a folder; name a file"},
        {"report " + kinds + " -o none/page.html", "none/page.html"},
        {"report " + kinds + " -o /dev/full", "/dev/full: is no regular file"},
    };
    for (const auto &[words, why] : refused) {
        const auto run = rtif(words);
        EXPECT_EQ(run.code, 1) << words;
        EXPECT_EQ(run.out, "") << words;
        EXPECT_THAT(run.err, HasSubstr(why)) << words;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "page.html"));
    EXPECT_TRUE(std::filesystem::is_empty(folder / "empty"));
}

TEST_F(PageCommand, WhatThePageIsMadeOfIsNotWrittenOver)
{
    std::filesystem::copy_file(EXAMPLES + "kinds.json", folder / "own.json");
    const std::string config = read("own.json");
    const auto over_config = rtif("report own.json -o ./own.json");
    EXPECT_EQ(over_config.code, 1);
    EXPECT_THAT(over_config.err, StartsWith("./own.json: is the configuration itself"));
    ASSERT_TRUE(read("own.json") == config);

    ASSERT_EQ(rtif("up own.json --state kept").code, 0);
    const auto before = page_files_of(folder / "kept");
    const auto into_state = rtif("report --state kept -o kept/page.html");
    EXPECT_EQ(into_state.code, 1);
    EXPECT_THAT(into_state.err, StartsWith("kept/page.html: is in the state folder"));
    EXPECT_EQ(page_files_of(folder / "kept"), before);
}

TEST_F(PageCommand, PageTakesThePlaceOfAnEarlierOneAndOthersMayReadIt)
{
    write("page.html", "an earlier one");
    page(EXAMPLES + "kinds.json");
    EXPECT_THAT(read("page.html"), StartsWith("<!doctype html>"));
    const auto allowed = std::filesystem::status(folder / "page.html").permissions();
    EXPECT_NE(allowed & std::filesystem::perms::owner_write, std::filesystem::perms::none);
    EXPECT_EQ(allowed & std::filesystem::perms::owner_exec, std::filesystem::perms::none);
    write("plain.txt", "");
    EXPECT_EQ(allowed, std::filesystem::status(folder / "plain.txt").permissions());
    std::size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        files += entry.path().extension() == ".html" ? 1U : 0U;
    }
    EXPECT_EQ(files, 1U);
}

TEST_F(PageCommand, SymbolicLinkIsFollowedToWhereItLeads)
{
    std::filesystem::create_directory(folder / "elsewhere");
    write("elsewhere/old.html", "an earlier one");
    std::filesystem::create_symlink("elsewhere/old.html", folder / "second");
    std::filesystem::create_symlink("second", folder / "page.html");
    page(EXAMPLES + "kinds.json");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "page.html"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "second"));
    EXPECT_THAT(read("elsewhere/old.html"), StartsWith("<!doctype html>"));

    // To where nothing is yet; into a state folder it is refused as by its own name.
    std::filesystem::create_symlink("elsewhere/new.html", folder / "fresh");
    EXPECT_EQ(rtif("report " + EXAMPLES + "kinds.json -o fresh").code, 0);
    EXPECT_THAT(read("elsewhere/new.html"), StartsWith("<!doctype html>"));
    ASSERT_EQ(rtif("up " + EXAMPLES + "kinds.json --state kept").code, 0);
    std::filesystem::create_symlink("kept/page.html", folder / "into");
    EXPECT_EQ(rtif("report --state kept -o into").code, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "kept" / "page.html"));
}

TEST_F(PageCommand, PageThatCannotBeWrittenWholeLeavesNothing)
{
    const std::string limited = "sh -c 'ulimit -f 20; exec \"$0\" report \"$1\" -o cut.html' '" +
                                std::string(RTIFHAL_RTIF) + "' '" + EXAMPLES + "leaf.json'";
    const std::string command =
        "cd '" + folder.string() + "' && " + limited + " >.out 2>.err"; // the shell sets the limit
    const int status = std::system(command.c_str());                    // NOLINT(cert-env33-c)
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(read(".err"), "cut.html: cannot be written: File too large\n");
    std::set<std::string> left;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        left.insert(entry.path().filename());
    }
    EXPECT_EQ(left, (std::set<std::string>{".err", ".out"}));
}
