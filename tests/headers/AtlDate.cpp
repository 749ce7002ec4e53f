// A date of ATL's is taken as it is. CHECK_BEFORE says which header comes first.

#ifdef CHECK_BEFORE
#include <atlcomtime.h>
#endif

#include "quillon/DateTimeUtils.h"

#ifndef CHECK_BEFORE
#include <atlcomtime.h>
#endif

std::string Format(const ATL::COleDateTime& date) {
    return quillon::DateTimeUtils::ColeDateTimeToJsonDateTime(date);
}
