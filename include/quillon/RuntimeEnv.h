#pragma once

#include <cstdint>

#include "quillon/Export.h"

namespace quillon {

/// Says in which kind of process the library runs, and whether it runs under test. There is no lock:
/// the host sets both before other threads read them. Nothing is logged or thrown.
class QUILLON_API IRuntimeEnv {
public:
    enum EnvType : std::int32_t { OutsideEngine = 0, AgentEngine = 1, AgentSubEngine = 2, NotSet = 3 };

    /// Returns whether a kind other than NotSet is set.
    virtual bool IsInitialized() const;
    /// Sets the kind, in place of an earlier one; getEnvType() returns it, NotSet at first.
    virtual void setEnvType(EnvType type);
    virtual EnvType getEnvType();
    /// Returns whether the process is an agent engine, of either kind.
    virtual bool IsAgentEngineEnv() const;
    /// Says that the process runs under test; nothing clears that again.
    virtual void SetTesting() = 0;
    /// Returns whether SetTesting() was called.
    virtual bool IsTesting() const = 0;

protected:
    IRuntimeEnv() = default;
    virtual ~IRuntimeEnv();

private:
    EnvType m_type = NotSet;
};

/// Holds the one IRuntimeEnv of the process. The static operations are thread-safe.
///
/// @code
/// RuntimeEnv::GetInstance()->setEnvType(IRuntimeEnv::AgentEngine);
/// const bool isEngine = RuntimeEnv::GetInstance()->IsAgentEngineEnv();  // true
/// @endcode
class QUILLON_API RuntimeEnv : public IRuntimeEnv {
public:
    /// Returns the instance, which the class owns and makes when there is none.
    static IRuntimeEnv* GetInstance();
    /// Deletes the instance; pointers to it are invalid from then on.
    static void ReleaseInstance();
    /// Returns whether there is an instance, and makes none.
    static bool HaveInstance();

    /// Implement IRuntimeEnv.
    void SetTesting() override;
    bool IsTesting() const override;

private:
    RuntimeEnv() = default;
    ~RuntimeEnv() override;

    static RuntimeEnv* m_pUniqueInstance;

    bool m_testing = false;
};

}  // namespace quillon
