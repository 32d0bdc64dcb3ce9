// Gain codebooks of G.729 (3.9.2) and of its Annex D (D.3.9): the published tables.
#include "sc/g729/gains.h"

namespace vek::g729 {

const std::array<GainEntry, kFirstEntries> kFirstGains = {{
    {3242, 9949},
    {1551, 2425},
    {2678, 27162},
    {1921, 9291},
    {1831, 5022},
    {1, 1516},
    {356, 14756},
    {57, 5404},
}};

const std::array<GainEntry, kSecondEntries> kSecondGains = {{
    {5142, 592},
    {17299, 1861},
    {6160, 2395},
    {16112, 3392},
    {826, 2005},
    {18973, 5935},
    {1994, 0},
    {15434, 237},
    {10573, 2966},
    {15132, 4914},
    {11569, 1196},
    {14194, 1630},
    {8091, 4861},
    {15161, 14276},
    {9120, 525},
    {13260, 3256},
}};

const std::array<GainEntry, kFirstEntries> kFirstGainsD = {{
    {5849, 0},
    {3171, 9280},
    {3617, 6747},
    {4987, 22294},
    {2929, 1078},
    {6068, 6093},
    {9425, 2731},
    {3915, 12872},
}};

const std::array<GainEntry, kSecondEntriesD> kSecondGainsD = {{
    {0, 4175},
    {10828, 27602},
    {16423, 15724},
    {4478, 7324},
    {3988, 0},
    {10291, 11385},
    {11956, 10735},
    {7876, 7821},
}};

} // namespace vek::g729
