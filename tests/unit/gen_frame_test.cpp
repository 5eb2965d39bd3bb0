// The generator frame: the names the sections share.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

// A generator with the switches that name things.
struct Probe : GenOutput {
    Probe(Schema& s, bool outOfLine, bool usePrefix, bool dllSpec, mstring const& dir)
        : GenOutput(s, outOfLine, false, false, false, false, false, false, nullptr, dir, "", "", false, false,
                    false, false, false, 8, 0, usePrefix, false, dllSpec) {}
};

}  // namespace

// A name that starts with the database name and an underscore, or with a
// longer word, keeps it; the export mark goes before a padded name.
TEST(GenFrame, PrefixedAndExportedNames) {
    Schema schema;
    schema.m_dbName = "shop";
    Probe plain(schema, false, false, false, "");
    Probe prefixed(schema, false, true, true, "");
    char const* const names[][2] = {{"item", "shop_item"}, {"shop", "shop_shop"},         {"shopping", "shopping"},
                                    {"sho", "shop_sho"},   {"shop_item", "shop_item"}, {"Shopping", "shop_Shopping"}};
    for (auto const& n : names) {
        EXPECT_EQ(plain.nameWithPrefix(n[0]), n[0]);
        EXPECT_EQ(prefixed.nameWithPrefix(n[0]), n[1]);
    }
    EXPECT_EQ(plain.MF("shop_f", 8), "shop_f  ");
    EXPECT_EQ(prefixed.MF("shop_f", 0), "ZYL_DLL_SPEC shop_f");
    EXPECT_EQ(prefixed.MF("shop_f", 21), "ZYL_DLL_SPEC shop_f  ");
}

// The transaction, operation, handle and cursor parameters of a function
// step aside for key parameters of the same names.
TEST(GenFrame, FixedParameterNamesAvoidKeyNames) {
    struct { std::vector<char const*> keys; char const* chosen; } const cases[] = {
        {{}, "t oper handle c"},
        {{"t", "oper", "handle", "c", "hdl"}, "t_ op hdl_ c_"},
        {{"c", "c_", "csr", "csr_", "csr_0"}, "t oper handle csr_1"},
        {{"t", "t_", "tr", "trn", "trn_"}, "trn_0 oper handle c"},
    };
    for (auto const& c : cases) {
        StrParams p;
        for (char const* k : c.keys)
            p.v_names.push_back(k);
        p.setup();
        EXPECT_EQ(std::string(p.m_trans.c_str()) + " " + p.m_oper.c_str() + " " + p.m_handle.c_str() + " " +
                      p.m_cursor.c_str(),
                  c.chosen);
    }
}
