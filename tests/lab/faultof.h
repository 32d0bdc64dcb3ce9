// What a piece of work says where it fails.
#pragma once

#include "fault.h"

#include <string>

namespace krlab {

/// The text of the Fault that `work` throws; empty where it throws none.
template <class Work>
std::string faultIn(Work work) {
    try {
        work();
    } catch (const Fault& fault) {
        return fault.what();
    }
    return "";
}

} // namespace krlab
