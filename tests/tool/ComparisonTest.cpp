#include "stmdcm/reading/Comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace stmdcm {

namespace {

Configuration Sample() {
    Configuration sample;
    sample.properties = {{"STM_data_flip", true, Unit::None, 0, 0}, {"Clock_hz", false, Unit::Hertz, 200000000, 1}};
    sample.sc = {{{2, 3, "mod0", "port_a", 1000}, false, {{0, "read"}}, {{"sum", "#0:10", "MB/s", 10, 1}}},
                 {{4, 3, "mod0", "port_b", 1000}, false, {}, {}}};
    sample.cpt = {{{0, 17, "mem", "p0", 65535}, 333000000, 2, 3, 130}};
    sample.pmi = {{"CMI1", 512}, {"PMI", 256}};
    sample.objectFiles = {{"core0", "/a.out", 1700000000, 1700000000}};
    return sample;
}

/// A line for each.
std::string Told(const Configuration& left, const Configuration& right) {
    std::string told;
    for (const Difference& difference : Compare(left, right)) {
        told += difference.kind + "|" + difference.item + "|" + difference.field + "|" + difference.left.value_or("-") +
                "|" + difference.right.value_or("-") + "\n";
    }
    return told;
}

}  // namespace

TEST(ComparisonTest, TellsWhichFieldDiffers) {
    const std::pair<std::function<void(Configuration&)>, std::string> cases[] = {
        {[](auto& c) { c.properties[0].value = 1; }, "property|STM_data_flip|value|no|yes"},
        {[](auto& c) { c.properties[1].value = 1; }, "property|Clock_hz|value|200 MHz|1 Hz"},
        {[](auto& c) { c.sc[0].probe = "x"; }, "SC use case|job 2, module 3|probe|port_a|x"},
        {[](auto& c) { c.sc[0].suppress = true; }, "SC use case|job 2, module 3|suppress|no|yes"},
        {[](auto& c) { c.sc[0].counters[0].text = "w"; }, "SC use case|job 2, module 3|counters[0].text|read|w"},
        {[](auto& c) { c.sc[0].formulas[0].outputMask = 2; },
         "SC use case|job 2, module 3|formulas[0].output_mask|0x1|0x2"},
        {[](auto& c) { c.sc.pop_back(); }, "SC use case|job 4, module 3||there|-"},
        {[](auto& c) { c.sc.push_back({}); }, "SC use case|job -1, module 0||-|there"},
        {[](auto& c) { c.cpt[0].dataOptions = 131; }, "CPT use case|job 0, module 17|data_options|0x82|0x83"},
        {[](auto& c) { c.pmi[0].sampleWindow = 1; }, "PMI/CMI use case|CMI1|sample_window|512|1"},
        {[](auto& c) { c.objectFiles[0].recorded = 0; },
         "object file|core0|recorded|2023-11-14 22:13:20Z|1970-01-01 00:00:00Z"},
    };
    for (const auto& [change, difference] : cases) {
        Configuration changed = Sample();
        change(changed);
        EXPECT_EQ(Told(Sample(), changed), difference + "\n");
    }
}

TEST(ComparisonTest, AlikeItemsAreMatchedInTheirOrder) {
    Configuration left, right;
    left.pmi = {{"PMI", 1}, {"PMI", 2}};
    right.pmi = {{"PMI", 1}, {"PMI", 3}, {"PMI", 4}};
    EXPECT_EQ(Told(left, right), "PMI/CMI use case|PMI|sample_window|2|3\nPMI/CMI use case|PMI||-|there\n");
}

}  // namespace stmdcm
