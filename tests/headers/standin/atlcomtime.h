#pragma once

// Stands in for ATL's header of this name, which the compilers of this project do not have: the members
// that the library reads.

namespace ATL {

class COleDateTime {
public:
    enum DateTimeStatus { error = -1, valid = 0, invalid = 1, null = 2 };

    DateTimeStatus GetStatus() const { return m_status; }

    double m_dt = 0;
    DateTimeStatus m_status = valid;
};

}  // namespace ATL
