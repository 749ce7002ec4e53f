#include "quillon/WayfarProviderWrapper.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "quillon/IProviderRegistry.h"
#include "quillon/ServiceLocator.h"

namespace quillon::test {
namespace {

/// A registry of one provider, which keeps its last call as text.
struct Registry final : IProviderRegistry, IProvider {
    Registry() { ServiceLocator::Put<IProviderRegistry>(this); }
    ~Registry() override { ServiceLocator::Remove<IProviderRegistry>(); }
    IProvider* GetProvider(const std::string& name) override { return name == provider ? this : nullptr; }
    void InvokeMethod(const std::string& method, VariantList& parameters, InvocationResult& result,
                      void* reserved) override {
        std::ostringstream text;
        text << method << parameters << (reserved == nullptr);
        call = text.str();
        isInteger = parameters.Size() == 4 && parameters.TypeIs(typeid(long long), 2);
        fill(result);
    }

    std::string provider = "Wayfar", call;
    bool isInteger = false;
    std::function<void(InvocationResult&)> fill = [](InvocationResult& result) {
        result.errorMessage = "no";
    };
};

std::string TextOf(const InvocationResult& result) {
    return std::to_string(result.resultCode) + result.errorMessage;
}

TEST(WayfarProviderWrapper, AvailabilityIsTheFirstRowsBoolean) {
    Registry registry;
    WayfarProviderWrapper wrapper;
    const std::string unusable = "5Unexpected result from Wayfar availability test";
    const struct {
        Variant answer;
        bool available, failed;
        std::string told;
    } cases[] = {{Variant("WayfarOkay", true), true, false, "0"},
                 {Variant("WayfarOkay", false), false, false, "0"},
                 {Variant("WayfarOkay", 2), true, false, "0"},
                 {Variant(), false, true, "0"},  // no row
                 {Variant("Other", true), false, true, unusable},
                 {Variant("WayfarOkay", typeid(bool)), false, true, unusable},
                 {Variant("WayfarOkay", "true"), false, true, unusable}};
    for (const auto& c : cases) {
        registry.fill = [&c](InvocationResult& result) {
            if (c.answer != Variant()) result.resultTable.AddRow(VariantList(c.answer));
        };
        InvocationResult result;
        bool failed = !c.failed, failedAlone = !c.failed;
        EXPECT_EQ(wrapper.WayfarIsAvailable(failed, &result), c.available) << &c - cases;
        EXPECT_EQ(wrapper.WayfarIsAvailable(failedAlone, nullptr), c.available) << &c - cases;
        EXPECT_TRUE(failed == c.failed && failedAlone == c.failed) << &c - cases;
        EXPECT_EQ(registry.call + TextOf(result), "IsOkayForDownload{}1" + c.told);
    }
}

TEST(WayfarProviderWrapper, DownloadsPassTheirParametersInOrder) {
    Registry registry;
    WayfarProviderWrapper wrapper;
    InvocationResult result;
    EXPECT_TRUE(wrapper.Download("l", "f", "p", result));
    EXPECT_EQ(registry.call,
              "DownloadFolderContent{RemoteContentFolderUrl=f, RemoteLszUrl=l, LocalFolderPath=p}1");
    EXPECT_TRUE(wrapper.Download("u", "p", ContentExpectation{5LL << 30, "h"}) && registry.isInteger);
    EXPECT_EQ(
        registry.call,
        "DownloadFileContent{RemoteContentFileUrl=u, FileHash=h, FileSize=5368709120, LocalFilePath=p}1");
    registry.fill = [](InvocationResult& r) { r.resultCode = 1; };
    EXPECT_FALSE(wrapper.Download("l", "f", "p", result) || wrapper.Download("u", "p", {}));
    registry.fill = [](InvocationResult&) { throw std::runtime_error("broken"); };
    EXPECT_THROW(wrapper.Download("u", "p", {}), std::runtime_error);
}

TEST(WayfarProviderWrapper, WithoutRegistryOrProviderNothingIsAsked) {
    auto registry = std::make_unique<Registry>();
    registry->provider = "another";
    for (int round = 0; round < 2; ++round, registry.reset()) {
        WayfarProviderWrapper wrapper;
        InvocationResult asked, downloaded;
        bool failed = false;
        EXPECT_FALSE(wrapper.WayfarIsAvailable(failed, &asked) || wrapper.WayfarIsAvailable(failed, nullptr));
        EXPECT_FALSE(wrapper.Download("l", "f", "p", downloaded) || wrapper.Download("u", "p", {}));
        EXPECT_TRUE(failed);
        EXPECT_EQ(TextOf(asked) + TextOf(downloaded), "4Missing 'Wayfar' provider4Missing 'Wayfar' provider");
    }
    EXPECT_FALSE(WayfarProviderWrapper::WayfarIsEnabled());
}

}  // namespace
}  // namespace quillon::test
