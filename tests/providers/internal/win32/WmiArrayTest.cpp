#include "../WmiFixture.h"
#include "platform/win32/WindowsHeaders.h"

// Only the system makes arrays of more than one dimension.

namespace quillon::test {

TEST_F(WmiTest, AnArrayOfTwoDimensionsIsNotReadAsOneOfOne) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 0}};
    _variant_t square;
    square.parray = ::SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(square.parray, nullptr);
    square.vt = VT_ARRAY | VT_I4;
    repository.AddClass(kNamespace, {L"One", {{L"V", CIM_SINT32 | CIM_FLAG_ARRAY, square}}, {}});
    repository.AddInstance(kNamespace, L"One", {});
    ASSERT_TRUE(connector.ExecuteQuery("SELECT * FROM One", &table));
    EXPECT_EQ(table.begin()->Get("V"), Variant("V", "(array)"));
}

}  // namespace quillon::test
