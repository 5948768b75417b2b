/*
 * ingress_create_test.cpp: an interface's L3 ingress object: what each of its
 * fields is made of on both chips, and what keeps it from being written.
 *
 * ingress_ties_test.cpp has how it is tied to ports and VLANs, class_id_test.cpp
 * the class on its own.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fwmpd/l3_cache.h>
#include <sdk/error.h>

namespace rtifhal_test::ingress_create
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_ing_create";
constexpr int IIF = 7;

/** An ingress object as the journal prints it. */
struct Fields {
    std::string flags = "0x6";
    int vrf = 1;
    int urpf = 0;
    int intf_class = 64;
    int ipmc = 0;

    std::string text() const
    {
        return "{flags=" + flags + " vrf=" + std::to_string(vrf) + " urpf=" + std::to_string(urpf) +
               " class=" + std::to_string(intf_class) + " ipmc=" + std::to_string(ipmc) + " qos=0}";
    }
};

/** The port of SDK port 5 with number 7, and how its object is written. */
template <class Base> class IngressTest : public Base
{
protected:
    IngressTest()
    {
        lif->with_record(IIF);
        this->start();
    }

    /** What a creation of the interface writes. */
    std::vector<std::string> written()
    {
        this->start();
        EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
        return this->calls_of({"rtifhal_bcm_l3_ingress_create"});
    }
    /** The steps before the object that each road begins with. */
    Message entered() const
    {
        return trace(CREATE,
                     "inl3lif->ifindex = " + lif->hex() + " l3lif->ifindex = " + lif->hex() + "\n");
    }
    /** The messages of a first creation; they are the same on both chips. */
    std::vector<Message> whole_road() const
    {
        return {
            this->entered(),
            trace(CREATE, "l3_if_index = 0x7 ipmc_intf_id = 0x7 iif = 0x7\n"),
            trace(CREATE, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
            trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
            trace(CREATE,
                  " rtifhal_bcm_l3_ing_create(" + lif->index() + ") iif 7, vrf 1 rpf 0 class 64\n"),
            trace(CREATE,
                  "Before calling bcm_l3_ingress_create - iif:7, l3_iif.flags:0x6, l3_iif.vrf:1, "
                  "l3_iif.urpf_mode:0, l3_iif.intf_class:64, l3_iif.ipmc_intf_id:0, "
                  "l3_iif.qos_map_id:0\n"),
            trace(CREATE, "L3Ingress L3 Phy or L3 PC port = 5 iif = 7\n"),
            trace(CREATE, "bcm_l3_ing_create(" + lif->hex() + ") control: 5, 7\n"),
            trace(CREATE, "bcm_l3_ing_create(" + lif->hex() + ") success: 5, 7\n"),
        };
    }
    static std::vector<std::string> object(const Fields &fields)
    {
        return {called::write_ingress(fields.text(), IIF)};
    }

    std::unique_ptr<Lif> lif = port(5);
};

class IngressCreate : public IngressTest<LibraryTest>
{
protected:
    /** Puts an object of that number into the cache, each field of which has a value. */
    static void cache()
    {
        bcm_l3_ingress_t ingress = {0xFFFF, 9, 2, 0x41, 0x1F, 3, {0xAAAA, 0xBBBB}};
        int iif = IIF;
        rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
    }
};

class IngressCreateOnTrident2 : public IngressTest<Trident2Test>
{
};

/** The calls of the tie to port 5, after the object is written. */
std::vector<std::string> with_port_tie(const Lif &lif, std::vector<std::string> calls)
{
    for (auto &call :
         {called::is_tunnel(lif, 0), called::is_sub(lif, 0), called::is_port_channel(lif, 0),
          called::type(lif, 26), called::port_of(lif, 5), called::port_control(5, IIF)}) {
        calls.push_back(call);
    }
    return calls;
}

} // namespace

TEST_F(IngressCreate, FirstCreationWritesTheObjectAndTiesThePort)
{
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
    expect_calls(
        with_port_tie(*lif, {called::ingress_init(), called::unit(), called::type(*lif, 26),
                             called::trident2(0), called::write_ingress(Fields{}.text(), IIF)}));
    expect_messages(whole_road());
}

TEST_F(IngressCreate, UpdateStartsFromTheCachedObject)
{
    cache();
    start();
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 0), 0);
    expect_calls(
        with_port_tie(*lif, {called::ingress_init(), called::unit(), called::type(*lif, 26),
                             called::from_cache(IIF), called::trident2(0),
                             called::write_ingress(Fields{}.text(), IIF)}));
    auto expected = whole_road();
    expected.insert(expected.begin() + 2,
                    {trace(CREATE, "Get l3_iif for iif 7\n"),
                     trace(CREATE, "ipmc_intf_id = 1f class 41 flags = 6\n")});
    expect_messages(expected);
}

TEST_F(IngressCreate, UpdateLetsFieldsThatItDoesNotSetReachTheChipUnchanged)
{
    cache();
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 0), 0);
    sw.end_request();
    ASSERT_NE(sw.chip.l3_ingresses.find(IIF), nullptr);
    const auto &object = *sw.chip.l3_ingresses.find(IIF);
    EXPECT_EQ(object.reserved[0], 0xAAAAU);
    EXPECT_EQ(object.reserved[1], 0xBBBBU);
    EXPECT_EQ(object.flags, 6U);
    EXPECT_EQ(object.qos_map, 0);
}

TEST_F(IngressCreate, CreationForgetsTheCachedObject)
{
    cache();
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
    sw.end_request();
    ASSERT_NE(sw.chip.l3_ingresses.find(IIF), nullptr);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->reserved[0], 0U);
}

TEST_F(IngressCreate, ReversePathModeThreeIsTwoAndTwoIsOneAndAllElseIsOff)
{
    const std::pair<std::uint8_t, int> rows[] = {{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 0}, {255, 0}};
    for (const auto &[property, mode] : rows) {
        lif->properties.urpf_mode = property;
        EXPECT_EQ(written(), object({.urpf = mode})) << "property " << int{property};
    }
}

TEST_F(IngressCreate, VrfFollowsTheFamilyThatIsOn)
{
    const struct {
        std::uint32_t ipv4_en;
        std::uint16_t vrf;
        std::uint32_t ipv6_en;
        std::uint16_t ipv6_vrf;
        int expected;
    } rows[] = {
        {1, 5, 0, 7, 5}, {1, 5, 1, 7, 5}, {1, 0, 1, 7, 1}, {2, 5, 0, 7, 5},
        {0, 5, 1, 7, 7}, {0, 5, 1, 0, 1}, {0, 5, 0, 7, 0}, {0, 0, 0, 0, 0},
    };
    for (const auto &row : rows) {
        lif->properties.ipv4_en = row.ipv4_en;
        lif->properties.vrf = row.vrf;
        lif->properties.ipv6_en = row.ipv6_en;
        lif->properties.ipv6_vrf = row.ipv6_vrf;
        EXPECT_EQ(written(), object({.vrf = row.expected}))
            << row.ipv4_en << ' ' << row.vrf << ' ' << row.ipv6_en << ' ' << row.ipv6_vrf;
    }
}

TEST_F(IngressCreate, MulticastInterfaceIsTheNumberWhileMulticastIsOn)
{
    lif->properties.ipv4_mc_en = 1;
    EXPECT_EQ(written(), object({.ipmc = IIF}));
    EXPECT_EQ(messages()[2], trace(CREATE, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 7 "
                                           "ipv4_mc_en = 1\n"));
    lif->properties.ipv4_mc_en = 0;
    EXPECT_EQ(written(), object({.ipmc = 0}));
}

TEST_F(IngressCreate, LabelStandsInTheClass)
{
    lif->record()->acl_qos_label_ingress = 0x23;
    EXPECT_EQ(written(), object({.intf_class = 0x63}));
}

TEST_F(IngressCreate, ClassAbove255IsMaskedWithoutAnError)
{
    lif->record()->acl_qos_label_ingress = 0x123;
    lif->properties.class_high_bit = 1;
    EXPECT_EQ(written(), object({.intf_class = 0xE3}));
    expect_reports({});
    EXPECT_EQ(messages()[4], trace(CREATE, " rtifhal_bcm_l3_ing_create(" + lif->index() +
                                               ") iif 7, vrf 1 rpf 0 class 483\n"));
    EXPECT_EQ(messages()[5], trace(CREATE, "Masking upper bits of l3_iif.intf_class: Earlier "
                                           "0x1e3,after masking 0xe3\n"));
}

TEST_F(IngressCreate, ClassOf255IsNotMasked)
{
    lif->record()->acl_qos_label_ingress = 0xFF;
    EXPECT_EQ(written(), object({.intf_class = 0xFF}));
    EXPECT_EQ(messages().size(), 9U);
}

TEST_F(IngressCreate, FlagsOfATridentStaySixWhateverTheProperties)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ingress_flag_word = 1;
    EXPECT_EQ(written(), object({.flags = "0x6", .vrf = 0}));
}

TEST_F(IngressCreateOnTrident2, FlagsTellTheFamiliesThatAreOffAndTheFlagWord)
{
    const struct {
        std::uint32_t ipv4_en;
        std::uint32_t ipv6_en;
        std::uint32_t word;
        const char *flags;
        int vrf;
    } rows[] = {
        {1, 1, 0, "0x406", 1},  {0, 1, 0, "0x426", 1},  {1, 0, 0, "0x486", 1},
        {0, 0, 0, "0x4a6", 0},  {1, 1, 1, "0x8406", 1}, {0, 0, 1, "0x84a6", 0},
        {2, 2, 8, "0x8406", 1},
    };
    for (const auto &row : rows) {
        lif->properties.ipv4_en = row.ipv4_en;
        lif->properties.ipv6_en = row.ipv6_en;
        lif->properties.ingress_flag_word = row.word;
        EXPECT_EQ(written(), object({.flags = row.flags, .vrf = row.vrf}));
    }
}

TEST_F(IngressCreateOnTrident2, FirstCreationWritesTheObjectAndTiesThePort)
{
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
    expect_calls(with_port_tie(
        *lif, {called::ingress_init(), called::unit(), called::type(*lif, 26), called::trident2(1),
               called::write_ingress(Fields{.flags = "0x486"}.text(), IIF)}));
    expect_messages(whole_road());
}

TEST_F(IngressCreateOnTrident2, SubinterfaceOfAPortChannelHasThePortChannelsFlags)
{
    const auto main = port_channel(9);
    main->with_record(IIF).properties.ipv4_en = 0;
    main->properties.ingress_flag_word = 1;
    const auto sub = subinterface(*main, 10);
    sub->with_record(8).properties.ipv6_en = 1;
    this->start();
    EXPECT_EQ(rtifhal_l3_ing_create(sub->get(), 1), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}), object({.flags = "0x84a6", .vrf = 0}));
}

TEST_F(IngressCreateOnTrident2, FlagsArePrintedBeforeTheChipsOwnBits)
{
    EXPECT_EQ(written(), object({.flags = "0x486"}));
    EXPECT_EQ(messages()[5].text,
              "Before calling bcm_l3_ingress_create - iif:7, l3_iif.flags:0x6, l3_iif.vrf:1, "
              "l3_iif.urpf_mode:0, l3_iif.intf_class:64, l3_iif.ipmc_intf_id:0, "
              "l3_iif.qos_map_id:0\n");
}

TEST_F(IngressCreateOnTrident2, UpdateStartsTheFlagsFromSixToo)
{
    bcm_l3_ingress_t cached = {};
    cached.flags = 0xF0000;
    int iif = IIF;
    rtifhal_bcm_l3_ingress_create(0, &cached, &iif);
    start();
    lif->properties.ipv6_en = 1;
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 0), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}), object({.flags = "0x406"}));
    EXPECT_EQ(messages()[3], trace(CREATE, "ipmc_intf_id = 0 class 0 flags = 6\n"));
}

TEST_F(IngressCreate, InterfaceWithoutANumberIsRefusedAfterTheTypeLookUp)
{
    lif->record()->l3intf_id = 0;
    for (const int flag : {1, 0}) {
        start();
        EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), flag), -1);
        expect_calls({called::ingress_init(), called::unit(), called::type(*lif, 26)});
        expect_messages({entered(), trace(CREATE, "intf-id is 0. No l3-intf yet\n")});
    }
}

TEST_F(IngressCreate, ParkedNumberHasNoEffect)
{
    const auto parked = port(6);
    EXPECT_EQ(rtifhal_l3_ing_create(parked->with_parked(300).get(), 1), -1);
    EXPECT_EQ(messages().back(), trace(CREATE, "intf-id is 0. No l3-intf yet\n"));
}

TEST_F(IngressCreate, LiveNumberIsTakenThoughTheRecordSaysTakenDown)
{
    lif->record()->brcm_prog_complete = 1;
    lif->record()->prev_l3_if_index = 300;
    EXPECT_EQ(written(), object({}));
}

TEST_F(IngressCreate, MissingContextOrPropertiesAreReported)
{
    const auto no_context = port(5);
    lif->without_properties();
    for (Lif *bare : {no_context.get(), lif.get()}) {
        start();
        EXPECT_EQ(rtifhal_l3_ing_create(bare->get(), 1), -1);
        expect_calls({called::ingress_init(), called::unit(), called::type(*bare, 26)});
        expect_messages({entered(), report(CREATE, "Failed to get l3lif pd context for intf " +
                                                       bare->index())});
    }
}

TEST_F(IngressCreate, MissingRecordFailsSilently)
{
    const auto bare = port(5);
    EXPECT_EQ(rtifhal_l3_ing_create(bare->with_bare_context().get(), 1), -1);
    expect_calls({called::ingress_init(), called::unit(), called::type(*bare, 26)});
    expect_messages({entered()});
}

TEST_F(IngressCreate, UpdateOfAnObjectThatTheCacheDoesNotHaveFails)
{
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 0), -1);
    expect_calls({called::ingress_init(), called::unit(), called::type(*lif, 26),
                  called::from_cache(IIF, false)});
    expect_messages({entered(), trace(CREATE, "l3_if_index = 0x7 ipmc_intf_id = 0x7 iif = 0x7\n"),
                     trace(CREATE, "Get l3_iif for iif 7\n"),
                     report(CREATE, "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for "
                                    "iif 7\n")});
}

TEST_F(IngressCreate, UnknownTypeIsReportedAndThePortIsTiedAllTheSame)
{
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_type", code);
        EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
        expect_calls(with_port_tie(*lif, {called::ingress_init(), called::unit(),
                                          called::no_type(*lif, code), called::trident2(0),
                                          called::write_ingress(Fields{}.text(), IIF)}));
        expect_reports(
            {report(CREATE, "bcm_l3_ing_create(" + lif->decimal() + ") get type failed\n")});
    }
}

TEST_F(IngressCreate, SviOfUnknownTypeIsNotTiedToItsVlan)
{
    const auto vlan = svi(100);
    vlan->with_record(IIF);
    fail("if_index_get_type", -1);
    EXPECT_EQ(rtifhal_l3_ing_create(vlan->get(), 1), 0);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_control_vlan_get_from_cache"), 0U);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_port_control_set"), 1U);
}

TEST_F(IngressCreate, RefusedObjectIsReportedAndThePortIsTiedAllTheSame)
{
    fail("rtifhal_bcm_l3_ingress_create", -6);
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
    expect_calls(with_port_tie(*lif, {called::ingress_init(), called::unit(),
                                      called::type(*lif, 26), called::trident2(0),
                                      called::write_ingress(Fields{}.text(), IIF, -6)}));
    expect_reports(
        {report(CREATE, "bcm_l3_ing_create(" + lif->hex() + ") failed: " + _shr_errmsg[6] + "\n")});
    EXPECT_EQ(messages().back(),
              trace(CREATE, "bcm_l3_ing_create(" + lif->hex() + ") success: 5, 7\n"));
}

TEST_F(IngressCreate, PositiveAnswerOfTheChipIsNoFailure)
{
    fail("rtifhal_bcm_l3_ingress_create", 3);
    EXPECT_EQ(rtifhal_l3_ing_create(lif->get(), 1), 0);
    expect_reports({});
}

TEST_F(IngressCreate, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_l3_ing_create(nullptr, 1), -1);
    expect_calls({});
}

} // namespace rtifhal_test::ingress_create
