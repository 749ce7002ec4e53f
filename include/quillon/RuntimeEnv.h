#pragma once

#include <cstdint>

#include "quillon/Export.h"

namespace quillon {

/// In which kind of process the library runs, and whether under test. The host
/// sets both before other threads read them.
class QUILLON_API IRuntimeEnv {
public:
    enum EnvType : std::int32_t { OutsideEngine = 0, AgentEngine = 1, AgentSubEngine = 2, NotSet = 3 };

    virtual bool IsInitialized() const;
    virtual void setEnvType(EnvType type);
    virtual EnvType getEnvType();
    /// Either of the two kinds of agent engine process.
    virtual bool IsAgentEngineEnv() const;
    /// Nothing clears it again.
    virtual void SetTesting() = 0;
    virtual bool IsTesting() const = 0;

protected:
    IRuntimeEnv() = default;
    virtual ~IRuntimeEnv();

private:
    EnvType m_type = NotSet;
};

/// The one instance, made when it is first asked for. Any thread.
class QUILLON_API RuntimeEnv : public IRuntimeEnv {
public:
    static IRuntimeEnv* GetInstance();
    static void ReleaseInstance();
    static bool HaveInstance();

    void SetTesting() override;
    bool IsTesting() const override;

private:
    RuntimeEnv() = default;
    ~RuntimeEnv() override;

    static RuntimeEnv* m_pUniqueInstance;

    bool m_testing = false;
};

}  // namespace quillon
