/*
 * relabel_test.cpp: a new class label for an interface: written into its object
 * while it lives, kept for later while it has no record.
 *
 * class_id_test.cpp has the class that the label is part of.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fwmpd/l3_cache.h>

namespace rtifhal_test::relabel
{

namespace
{

constexpr const char *RELABEL = "rtifhal_upd_classid";
constexpr int IIF = 7;
constexpr int NOWHERE_TO_KEEP_IT = 0x41ED0011;

/** The embedded switch has an ingress object of that number. */
void make_object(int iif)
{
    bcm_l3_ingress_t ingress = {};
    rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
}

/** A port that the layer above knows. */
class Relabel : public LibraryTest
{
protected:
    Relabel()
    {
        sw.directory.add(lif->get());
        start();
    }

    int relabel(std::uint16_t label) { return rtifhal_upd_classid(label, lif->lif.ifindex); }
    std::string found(const char *answer = "record") const
    {
        return "l3lif_find_lif_from_ifindex(" + lif->index() + ") = " + answer;
    }
    Message entered(int label) const
    {
        return trace(RELABEL,
                     "if_index:" + lif->index() + ", class_id:" + std::to_string(label) + "\n");
    }

    std::unique_ptr<Lif> lif = port(5);
};

} // namespace

TEST_F(Relabel, LiveInterfaceStoresTheLabelAndWritesItsObjectAgain)
{
    lif->with_record(IIF);
    make_object(IIF);
    start();
    EXPECT_EQ(relabel(5), 0);
    expect_calls({found(), called::store(*lif), called::ingress_init(), called::unit(),
                  called::type(*lif, 26), called::from_cache(IIF), called::trident2(0),
                  called::write_ingress("{flags=0x6 vrf=1 urpf=0 class=69 ipmc=0 qos=0}", IIF),
                  called::is_tunnel(*lif, 0), called::is_sub(*lif, 0),
                  called::is_port_channel(*lif, 0), called::type(*lif, 26),
                  called::port_of(*lif, 5), called::port_control(5, IIF)});
    const std::string written = "rtifhal_l3_ing_create";
    const std::string hex = lif->hex();
    expect_messages({
        entered(5),
        trace(RELABEL, "Updated l3_pd->acl_qos_label_ingress = class_id\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n"),
        trace(written, "inl3lif->ifindex = " + hex + " l3lif->ifindex = " + hex + "\n"),
        trace(written, "l3_if_index = 0x7 ipmc_intf_id = 0x7 iif = 0x7\n"),
        trace(written, "Get l3_iif for iif 7\n"),
        trace(written, "ipmc_intf_id = 0 class 0 flags = 6\n"),
        trace(written, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(5)\n"),
        trace(written,
              " rtifhal_bcm_l3_ing_create(" + lif->index() + ") iif 7, vrf 1 rpf 0 class 69\n"),
        trace(written,
              "Before calling bcm_l3_ingress_create - iif:7, l3_iif.flags:0x6, l3_iif.vrf:1, "
              "l3_iif.urpf_mode:0, l3_iif.intf_class:69, l3_iif.ipmc_intf_id:0, "
              "l3_iif.qos_map_id:0\n"),
        trace(written, "L3Ingress L3 Phy or L3 PC port = 5 iif = 7\n"),
        trace(written, "bcm_l3_ing_create(" + hex + ") control: 5, 7\n"),
        trace(written, "bcm_l3_ing_create(" + hex + ") success: 5, 7\n"),
    });
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 5);
}

TEST_F(Relabel, LabelThatIsInPlaceIsStoredAndWrittenAgain)
{
    lif->with_record(IIF).record()->acl_qos_label_ingress = 5;
    make_object(IIF);
    start();
    EXPECT_EQ(relabel(5), 0);
    EXPECT_EQ(sw.journal.count("rtifhal_pss_l3port_store"), 1U);
    EXPECT_EQ(sw.journal.count("rtifhal_bcm_l3_ingress_create"), 1U);
}

TEST_F(Relabel, ResultOfTheWritingIsHandedUp)
{
    lif->with_record(IIF);
    EXPECT_EQ(relabel(5), -1);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 5);
    expect_reports({report("rtifhal_l3_ing_create",
                           "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for iif 7\n")});
}

TEST_F(Relabel, RefusedStoreDoesNotStopTheWriting)
{
    lif->with_record(IIF);
    make_object(IIF);
    fail("rtifhal_pss_l3port_store", -9);
    EXPECT_EQ(relabel(5), 0);
    EXPECT_EQ(calls().back(), called::port_control(5, IIF));
}

TEST_F(Relabel, WithoutARecordTheLabelWaitsAndTheErrorIsReported)
{
    for (const bool bare : {false, true}) {
        if (bare) {
            lif->with_bare_context();
        }
        start();
        EXPECT_EQ(relabel(5), 0);
        expect_calls({found()});
        expect_messages({entered(5), report(RELABEL, "failed to get l3_pd from if_index " +
                                                         lif->hex() + "\n")});
        EXPECT_EQ(lif->properties.acl_qos_label_pending, 5);
    }
}

TEST_F(Relabel, WithoutRecordAndPropertiesThereIsNowhereToKeepTheLabel)
{
    lif->without_properties();
    EXPECT_EQ(relabel(5), NOWHERE_TO_KEEP_IT);
    expect_calls({found()});
    expect_messages(
        {entered(5), report(RELABEL, "failed to get l3_pd from if_index " + lif->hex() + "\n")});
}

TEST_F(Relabel, WithoutPropertiesTheLabelStandsInTheRecordAndTheWritingFails)
{
    lif->with_record(IIF).without_properties();
    EXPECT_EQ(relabel(5), -1);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 5);
    EXPECT_EQ(sw.journal.count("rtifhal_pss_l3port_store"), 1U);
}

TEST_F(Relabel, CodeOfARefusedVlanRecordIsHandedUp)
{
    const auto vlan = svi(100);
    bcm_vlan_create(0, 100);
    make_object(IIF);
    sw.directory.add(vlan->with_record(IIF).get());
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(rtifhal_upd_classid(5, vlan->lif.ifindex), -4);
    EXPECT_EQ(vlan->record()->acl_qos_label_ingress, 5);
}

TEST_F(Relabel, WaitingLabelStandsInTheClassOnceTheRecordIsThere)
{
    l3iif_table_init();
    lif->lif.int_vlan = 4094;
    EXPECT_EQ(relabel(5), 0);
    EXPECT_EQ(rtifhal_l3_intf_create(0, lif->get(), nullptr, 1), 0);
    EXPECT_EQ(lif->properties.acl_qos_label_pending, 0);
    EXPECT_EQ(rtifhal_get_class_id(lif->get()), 69U);
}

TEST_F(Relabel, UnknownInterfaceFails)
{
    sw.directory.remove(lif->lif.ifindex);
    EXPECT_EQ(relabel(5), -1);
    expect_calls({found("null")});
    expect_messages(
        {entered(5), report(RELABEL, "failed to get l3lif from if_index " + lif->hex() + "\n")});
}

TEST_F(Relabel, SubinterfaceOfAPortChannelKeepsTheLabelInItsOwnRecord)
{
    const auto main = port_channel(7);
    main->with_record(IIF);
    make_object(IIF);
    const auto sub = subinterface(*main, 10);
    sw.directory.add(sub->with_record(8).get());
    start();
    EXPECT_EQ(rtifhal_upd_classid(5, sub->lif.ifindex), 0);
    EXPECT_EQ(sub->record()->acl_qos_label_ingress, 5);
    EXPECT_EQ(main->record()->acl_qos_label_ingress, 0);
    EXPECT_EQ(calls_of({"rtifhal_pss_l3port_store", "rtifhal_bcm_l3_ingress_create"}),
              std::vector<std::string>(
                  {called::store(*sub),
                   called::write_ingress("{flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF)}));
}

} // namespace rtifhal_test::relabel
