#pragma once

namespace ZU_WEP {

/// The binary and SI prefixes as factors, each the `double` nearest to the exact power.
class uEngineeringUnits {
  public:
    static constexpr double kibi = 0x1p10;
    static constexpr double mebi = 0x1p20;
    static constexpr double gibi = 0x1p30;
    static constexpr double tebi = 0x1p40;
    static constexpr double pebi = 0x1p50;
    static constexpr double exbi = 0x1p60;
    static constexpr double zebi = 0x1p70;
    static constexpr double yobi = 0x1p80;

    static constexpr double kilo = 1e3;
    static constexpr double mega = 1e6;
    static constexpr double giga = 1e9;
    static constexpr double tera = 1e12;
    static constexpr double peta = 1e15;
    static constexpr double exa = 1e18;
    static constexpr double zetta = 1e21;
    static constexpr double yotta = 1e24;

    static constexpr double milli = 1e-3;
    static constexpr double micro = 1e-6;
    static constexpr double nano = 1e-9;
    static constexpr double pico = 1e-12;
    static constexpr double femto = 1e-15;
    static constexpr double atto = 1e-18;
    static constexpr double zepto = 1e-21;
    static constexpr double yocto = 1e-24;

    uEngineeringUnits();
    virtual ~uEngineeringUnits();
};

}  // namespace ZU_WEP
