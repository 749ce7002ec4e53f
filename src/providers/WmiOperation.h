#pragma once

#include <memory>
#include <utility>

#include "providers/WmiCaller.h"
#include "quillon/WmiConnector.h"

namespace quillon {

/// One operation of a connector, within its deadline. A visitor may begin another one on the same
/// connector.
class WmiConnector::Operation {
public:
    explicit Operation(WmiConnector& connector)
        : m_connector(connector), m_outer(std::move(connector.m_caller)) {
        connector.m_caller = std::make_unique<WmiCaller>(connector.m_deadline);
    }
    ~Operation() { m_connector.m_caller = std::move(m_outer); }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    WmiConnector& m_connector;
    std::unique_ptr<WmiCaller> m_outer;
};

}  // namespace quillon
