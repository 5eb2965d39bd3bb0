// The generator frame: the switches' marks in the text every file starts
// with, the skeleton files, and the names the sections share.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "driver/job.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

void collect(int type, char const* message, char const*, int, int, void* context) {
    static_cast<std::vector<std::pair<int, std::string>>*>(context)->push_back({type, message});
}

// An empty, finished schema of database "shop" and an output directory.
// The model is filled by hand: the frame reads nothing but the model.
struct Frame {
    Frame() : reporter(collect, &reports) { schema.m_dbName = "shop"; }
    Class* addClass(char const* name) {
        Class* c = new Class();
        c->m_name = name;
        schema.m_classes->add(c);
        return c;
    }
    // A whole generation with the job's switches; the created files' bare names.
    std::vector<std::string> generate(Job const& job) {
        GenOutput* gen = job.createGenerator(schema, &reporter, out.path().c_str());
        gen->init();
        gen->run();
        gen->close();
        gen->closeBindings();
        // The files stand beside their names until the job moves them in place.
        mstring failed;
        EXPECT_EQ(gen->outputFiles().commit(failed), 0) << failed.c_str();
        std::vector<std::string> names;
        for (unsigned i = 0; i < gen->createdFiles().size(); i++)
            names.push_back(gen->createdFiles()[i].c_str() + out.path().size() + 1);
        delete gen;
        return names;
    }
    std::string text(std::string const& name) { return readFile(out.file(name)); }

    Schema schema;
    TempDir out;
    std::vector<std::pair<int, std::string>> reports;  // type and text
    ErrReporterMem reporter;
};

// Opens the frame's protected helpers to the tests.
struct Probe : GenOutput {
    Probe(Schema& s, bool outOfLine, bool usePrefix, bool dllSpec, mstring const& dir)
        : GenOutput(s, outOfLine, false, false, false, false, false, false, nullptr, dir, "", "", false, false,
                    false, false, false, 8, 0, usePrefix, false, dllSpec) {}
    using GenOutput::functionHead;
    using GenOutput::writeCFunction;
};

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

}  // namespace

// The inline headings are checked whole by the golden files; these are
// the marks of the export, sequence and wrapper switches.
TEST(GenFrame, HeadingsFollowTheSwitches) {
    Frame f;
    f.addClass("item")->m_hasSequences = true;
    Job job;
    job.cppWrappers = job.dllSpec = true;
    f.generate(job);
    std::string const h = f.text("shop.h");
    // The wrappers force out-of-line functions: no zylwrap.h in the header.
    EXPECT_TRUE(contains(h, "#include \"zyluda.h\"\n#include \"zylseq.h\"\n#ifndef ZYL_DLL_SPEC\n"
                            "#define ZYL_DLL_SPEC __declspec(dllimport)\n#endif\n"));
    EXPECT_FALSE(contains(h, "zylwrap.h"));
    EXPECT_TRUE(contains(h, "\nzyl_dictionary_h ZYL_DLL_SPEC shop_get_dictionary(void);\n"));
    EXPECT_TRUE(contains(f.text("shop.c"), "#define ZYL_DLL_SPEC __declspec(dllexport)\n#include \"shop.h\"\n"));
    EXPECT_TRUE(contains(f.text("shop.hpp"), "#define __ZYL__shop__HPP__\n\n#include \"zylseq.hpp\"\n"));

    struct {
        bool runtimeHeader;
        char const* include;
    } const wrappers[] = {{false, "zyl.h"}, {true, "zyl.hpp"}};
    for (auto const& w : wrappers) {
        Frame g;
        Job plain;
        plain.cppWrappers = true;
        plain.cppRuntimeHeader = w.runtimeHeader;
        g.generate(plain);
        EXPECT_TRUE(contains(g.text("shop.hpp"), std::string("\n#include \"") + w.include + "\"\n")) << w.include;
        EXPECT_TRUE(contains(g.text("shop.h"), "#include \"zyluda.h\"\n\n#ifndef ZYL_COMP_VER_MAJOR")) << w.include;
    }
}

TEST(GenFrame, SkeletonFilesAndTheirNewSiblings) {
    struct {
        bool exist;  // both skeletons are there from an earlier compile
        bool noApi;  // the class that needs them is hidden
        int count;   // user-defined indexes and collations the schema holds
        std::vector<std::string> files;
    } const cases[] = {
        {false, false, 1, {"shop.h", "shop.c", "shop_udf.c", "shop_coll.c"}},
        {true, false, 1, {"shop.h", "shop.c", "shop_udf.c.new", "shop_coll.c.new"}},
        {false, true, 1, {"shop.h", "shop.c"}},
        {false, false, 0, {"shop.h", "shop.c"}},
    };
    for (auto const& c : cases) {
        Frame f;
        Class* cls = f.addClass("item");
        cls->m_hasUserdef = cls->m_hasCollate = cls->m_hasList = true;
        cls->m_noApi = c.noApi;
        f.schema.m_userdefCount = f.schema.m_collationCount = c.count;
        if (c.exist) {
            f.out.write("shop_udf.c", "mine");
            f.out.write("shop_coll.c", "mine too");
        }
        EXPECT_EQ(f.generate(Job()), c.files);
        std::vector<std::pair<int, std::string>> warnings;
        if (c.exist) {
            warnings = {{0, "file shop_udf.c exists, generate shop_udf.c.new"},
                        {0, "file shop_coll.c exists, generate shop_coll.c.new"}};
            EXPECT_EQ(f.text("shop_udf.c") + f.text("shop_coll.c"), "minemine too");  // left as they were
        }
        EXPECT_EQ(f.reports, warnings);
        for (size_t i = 2; i < c.files.size(); i++)
            EXPECT_EQ(std::regex_replace(f.text(c.files[i]), std::regex(" \\* at [^\n]*\n"), ""),
                      "/* Generated by Quorabase Schema Compiler, build 1800, rev. official build, rev.25820\n */\n\n"
                      "#include \"shop.h\"\n#include \"zylwrap.h\"\n\n");
    }
}

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
    struct {
        std::vector<char const*> keys;
        char const* chosen;
    } const cases[] = {
        {{}, "t oper handle c"},
        {{"t"}, "t_ oper handle c"},
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
