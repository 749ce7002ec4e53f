#include "quillon/WayfarProviderWrapper.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "quillon/FileSystemUtils.h"
#include "quillon/IProviderRegistry.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "support/System.h"

namespace quillon::test {
namespace {

/// A registry of one provider, which keeps its last call as text.
struct Registry final : IProviderRegistry, IProvider {
    Registry() { ServiceLocator::Put<IProviderRegistry>(this); }
    ~Registry() override { ServiceLocator::Remove<IProviderRegistry>(); }
    IProvider* GetProvider(const std::string& name) override { return name == provider ? this : nullptr; }
    void InvokeMethod(const std::string& method, VariantList& all, InvocationResult& result,
                      void* reserved) override {
        std::ostringstream text;
        text << method << all << (reserved == nullptr)
             << (all.Size() == 4 && all.TypeIs(typeid(long long), 2));
        call = text.str();
        fill(result);
    }

    std::string provider = "Wayfar", call;
    std::function<void(InvocationResult&)> fill = [](InvocationResult& result) {
        result.errorMessage = "no";
    };
};

TEST(WayfarProviderWrapper, AvailabilityIsTheFirstRowsBoolean) {
    auto registry = std::make_unique<Registry>();
    WayfarProviderWrapper wrapper;
    const auto ask = [&](const Variant& answer) {
        registry->fill = [&](InvocationResult& result) { result.resultTable.AddRow(VariantList(answer)); };
        InvocationResult result;
        bool failed = false, failedAlone = false;
        const bool isOkay = wrapper.WayfarIsAvailable(failed, &result);
        EXPECT_TRUE(wrapper.WayfarIsAvailable(failedAlone, nullptr) == isOkay && failedAlone == failed);
        return (failed   ? "failed "
                : isOkay ? "yes "
                         : "no ") +
               std::to_string(result.resultCode) + result.errorMessage;
    };
    const std::string unusable = "failed 5Unexpected result from Wayfar availability test";
    EXPECT_EQ(ask(Variant("WayfarOkay", true)), "yes 0");
    EXPECT_EQ(ask(Variant("WayfarOkay", false)), "no 0");
    EXPECT_EQ(ask(Variant("WayfarOkay", 2)), "yes 0");
    for (const Variant& bad :
         {Variant("Other", true), Variant("WayfarOkay", typeid(bool)), Variant("WayfarOkay", "true")}) {
        SCOPED_TRACE(bad.GetName());
        EXPECT_EQ(ask(bad), unusable);
    }
    EXPECT_EQ(registry->call, "IsOkayForDownload{}10");
    bool failed = false;
    registry->fill = [](InvocationResult&) {};
    EXPECT_TRUE(!wrapper.WayfarIsAvailable(failed, nullptr) && failed);  // no row
    registry->provider = "another";
    EXPECT_EQ(ask({}), "failed 4Missing 'Wayfar' provider");
    registry.reset();
    EXPECT_FALSE(wrapper.WayfarIsAvailable(failed, nullptr) || WayfarProviderWrapper::WayfarIsEnabled());
}

TEST(WayfarProviderWrapper, DownloadsPassTheirParametersInOrder) {
    Registry registry;
    WayfarProviderWrapper wrapper;
    InvocationResult result;
    EXPECT_TRUE(wrapper.Download("l", "f", "p", result));
    EXPECT_EQ(registry.call,
              "DownloadFolderContent{RemoteContentFolderUrl=f, RemoteLszUrl=l, LocalFolderPath=p}10");
    EXPECT_TRUE(wrapper.Download("u", "p", ContentExpectation{5LL << 30, "h"}));
    EXPECT_EQ(
        registry.call,
        "DownloadFileContent{RemoteContentFileUrl=u, FileHash=h, FileSize=5368709120, LocalFilePath=p}11");
    registry.fill = [](InvocationResult& r) { r.resultCode = 1; };
    EXPECT_FALSE(wrapper.Download("l", "f", "p", result) || wrapper.Download("u", "p", {}));
    EXPECT_EQ(StringUtils::GetLastErrorAsString().substr(0, 6), "(1627/");
    registry.fill = [](InvocationResult& r) {
        r.resultCode = 3;
        EXPECT_FALSE(FileSystemUtils::EraseFile("C:\\missing\\x", true));
    };
    EXPECT_FALSE(wrapper.Download("u", "p", {}));
    EXPECT_EQ(StringUtils::GetLastErrorAsString().substr(0, 2), kWindows ? "(3" : "(2");
    registry.fill = [](InvocationResult&) { throw std::runtime_error("broken"); };
    EXPECT_THROW(wrapper.Download("u", "p", {}), std::runtime_error);
    registry.provider = "another";
    EXPECT_FALSE(wrapper.Download("l", "f", "p", result) || wrapper.Download("u", "p", {}));
    EXPECT_EQ(StringUtils::GetLastErrorAsString().substr(0, 6), "(1168/");
    EXPECT_EQ(std::to_string(result.resultCode) + result.errorMessage, "4Missing 'Wayfar' provider");
}

}  // namespace
}  // namespace quillon::test
