// The schema object model: defaults, look-ups, events and ownership.
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <utility>

#include <gtest/gtest.h>

#include "host/zylcomp/schema.h"

namespace {

Field makeField(char const* name, char const* type, int position) {
    Field f;
    f.m_name = name;
    f.m_typeName = type;
    f.m_position = position;
    return f;
}

Index indexOn(char const* name, char const* firstStep) {
    Index ix;
    ix.m_name = name;
    Index::Segment seg;
    Index::FldEl el;
    el.m_name = firstStep;
    seg.v_fldEl.push_back(el);
    ix.v_segment.push_back(seg);
    return ix;
}

Event makeEvent(char const* name, int kind, int number, char const* fieldName = "") {
    Event e;
    e.m_name = name;
    e.m_kind = kind;
    e.m_number = number;
    e.m_fieldName = fieldName;
    return e;
}

Enum* makeEnum(char const* name, std::initializer_list<std::pair<char const*, int>> elems) {
    Enum* e = new Enum(name);
    for (auto const& p : elems) {
        Enum::Elem el;
        el.m_name = p.first;
        el.m_value = p.second;
        e->v_elem.push_back(el);
    }
    return e;
}

}  // namespace

// ---------------------------------------------------------------------------
// Struct construction

struct CategoryCase {
    int category;
    bool dynamic;
    bool blobs;
};

void PrintTo(CategoryCase const& c, std::ostream* os) { *os << "category " << c.category; }

class SchemaModelCategory : public ::testing::TestWithParam<CategoryCase> {};

TEST_P(SchemaModelCategory, ConstructorDerivesFlagsFromCategory) {
    CategoryCase const& c = GetParam();
    Struct s("t", static_cast<TypeCategory>(c.category), 3, 5, 1, 2, "ct");
    EXPECT_EQ(c.dynamic, s.m_isDynamic) << "category " << c.category;
    EXPECT_EQ(c.blobs, s.m_hasBlobs) << "category " << c.category;
    EXPECT_TRUE(s.m_finished);
    EXPECT_FALSE(s.m_isClass);
    EXPECT_EQ(c.category, static_cast<int>(s.m_category));
}

INSTANTIATE_TEST_SUITE_P(AllCategories, SchemaModelCategory,
                         ::testing::Values(CategoryCase{1, false, false}, CategoryCase{2, false, false},
                                           CategoryCase{3, true, false}, CategoryCase{4, true, true},
                                           CategoryCase{6, false, false}, CategoryCase{7, false, false},
                                           CategoryCase{8, false, false}, CategoryCase{9, false, false},
                                           CategoryCase{10, true, false}, CategoryCase{11, true, false},
                                           CategoryCase{13, true, false}, CategoryCase{14, false, false},
                                           CategoryCase{15, false, false}, CategoryCase{16, true, false}));

TEST(SchemaModelStruct, ConstructorStoresLayoutNumbersAndCType) {
    Struct s("x", TC_SCALAR, 3, 5, 1, 2, "ct");
    EXPECT_EQ(3, s.m_layout.compact.m_size.m_num);
    EXPECT_EQ(5, s.m_layout.large.m_size.m_num);
    EXPECT_EQ(1, s.m_layout.compact.m_align.m_num);
    EXPECT_EQ(2, s.m_layout.large.m_align.m_num);
    EXPECT_TRUE(s.m_layout.compact.m_size.m_expr.empty());
    EXPECT_EQ(mstring("x"), s.m_name);
    EXPECT_EQ(mstring("ct"), s.m_cType);
}

TEST(SchemaModelStruct, CategoryOutsideOneToSixteenThrowsCString) {
    for (int category : {0, 17, -1}) {
        try {
            Struct s("x", static_cast<TypeCategory>(category), 1, 1, 1, 1, "");
            ADD_FAILURE() << "no throw for category " << category;
        } catch (char const* what) {
            EXPECT_STREQ(" illegal category ", what);
        }
    }
}

TEST(SchemaModelStruct, DefaultIsAnUnfinishedDynamicStruct) {
    Struct s;
    EXPECT_EQ(TC_STRUCT, s.m_category);
    EXPECT_TRUE(s.m_isDynamic);
    EXPECT_FALSE(s.m_finished);
    EXPECT_FALSE(s.m_hasBlobs);
    EXPECT_EQ(0u, s.v_field.size());
    EXPECT_EQ(0, s.m_layout.large.m_size.m_num);
    EXPECT_EQ(0, s.m_refCount);
}

TEST(SchemaModelStruct, FindFieldSearchesByName) {
    Struct s;
    s.v_field.push_back(makeField("a", "signed<4>", 0));
    s.v_field.push_back(makeField("b", "string", 1));
    Field* b = s.findField("b");
    ASSERT_NE(nullptr, b);
    EXPECT_EQ(&s.v_field[1], b);
    EXPECT_EQ(nullptr, s.findField("c"));
    EXPECT_EQ(nullptr, s.findField("B"));
}

TEST(SchemaModelStruct, AddOwnerKeepsEachClassOnce) {
    Struct s;
    Class c1, c2;
    c1.m_name = "same";
    c2.m_name = "same";
    s.addOwner(&c1);
    s.addOwner(&c2);
    s.addOwner(&c1);
    ASSERT_EQ(2u, s.v_owner.size());
    EXPECT_EQ(&c1, s.v_owner[0]);
    EXPECT_EQ(&c2, s.v_owner[1]);
}

TEST(SchemaModelStruct, AssignmentCopiesEverythingButTheReferenceCount) {
    Struct oid;
    oid.m_name = "Oid";
    oid.v_field.push_back(makeField("id", "unsigned<4>", 0));
    oid.m_isDynamic = false;
    oid.m_refCount = 7;

    Struct* ref = new Struct("ref", TC_OID_REF, 0, 0, 0, 0, "");
    HIComparable holder(ref);
    *ref = oid;
    EXPECT_EQ(1, ref->m_refCount);
    EXPECT_EQ(mstring("Oid"), ref->m_name);
    ASSERT_EQ(1u, ref->v_field.size());
    EXPECT_FALSE(ref->m_isDynamic);

    // The fields are a deep copy.
    oid.v_field[0].m_name = "changed";
    EXPECT_EQ(mstring("id"), ref->v_field[0].m_name);

    Struct copy(oid);
    EXPECT_EQ(0, copy.m_refCount);
    EXPECT_EQ(mstring("changed"), copy.v_field[0].m_name);
}

// ---------------------------------------------------------------------------
// Value records

TEST(SchemaModelRecords, FieldAndIndexDefaults) {
    Field f;
    EXPECT_EQ(-1, f.m_indicator);
    EXPECT_EQ(-1, f.m_precision);
    EXPECT_EQ(nullptr, f.m_struct);
    EXPECT_EQ(nullptr, f.m_compactLayout);
    EXPECT_FALSE(f.m_isNullable);

    Index ix;
    EXPECT_EQ(-1, ix.m_code);
    EXPECT_EQ(-1, ix.m_userdefNo);
    EXPECT_EQ(-1, ix.m_vbased);
    EXPECT_EQ(0, ix.ecount);
    EXPECT_EQ(IT_TREE, ix.m_type);
    EXPECT_FALSE(ix.m_isSystem);

    Index::Segment seg;
    EXPECT_EQ(-1, seg.m_elemPos);
    EXPECT_EQ(-1, seg.m_collationNo);

    Event e;
    EXPECT_EQ(-1, e.m_number);
    EXPECT_EQ(nullptr, e.m_field);

    Collation coll("c");
    EXPECT_TRUE(coll.m_onlyNoApi);
    EXPECT_TRUE(coll.m_onlyTree);
    EXPECT_EQ(0, coll.m_fieldKind);
}

struct SysIndexCase {
    IndexType type;
    bool unique;
    int ecount;
};

void PrintTo(SysIndexCase const& c, std::ostream* os) {
    *os << "type " << static_cast<int>(c.type) << (c.unique ? " unique" : " nonunique");
}

class SchemaModelSysIndex : public ::testing::TestWithParam<SysIndexCase> {};

TEST_P(SchemaModelSysIndex, EstimateIsAThousandOnlyForHash) {
    SysIndexCase const& c = GetParam();
    SysIndex ix("idx@", c.type, c.unique);
    EXPECT_EQ(mstring("idx@"), ix.m_name);
    EXPECT_EQ(c.type, ix.m_type);
    EXPECT_EQ(c.unique, ix.m_unique);
    EXPECT_TRUE(ix.m_isSystem);
    EXPECT_EQ(c.ecount, ix.ecount);
    // Everything else keeps the values of a fresh index.
    EXPECT_EQ(-1, ix.m_code);
    EXPECT_EQ(-1, ix.m_vbased);
    EXPECT_EQ(0u, ix.v_fieldName.size());
}

INSTANTIATE_TEST_SUITE_P(Kinds, SchemaModelSysIndex,
                         ::testing::Values(SysIndexCase{IT_HASH, true, 1000}, SysIndexCase{IT_HASH, false, 1000},
                                           SysIndexCase{IT_TREE, false, 0}, SysIndexCase{IT_TREE, true, 0},
                                           SysIndexCase{IT_PATRICIA, false, 0}));

TEST(SchemaModelSysIndex, AddFieldAppendsOnePlainKeyPart) {
    SysIndex ix("ts_idx", IT_TREE, false);
    ix.addField("class_code");
    ix.addField("timestamp");
    ASSERT_EQ(2u, ix.v_fieldName.size());
    EXPECT_EQ(mstring("timestamp"), ix.v_fieldName[1]);
    ASSERT_EQ(2u, ix.v_desc.size());
    ASSERT_EQ(2u, ix.v_nocase.size());
    ASSERT_EQ(2u, ix.v_collation.size());
    EXPECT_FALSE(ix.v_desc[0]);
    EXPECT_FALSE(ix.v_nocase[1]);
    EXPECT_TRUE(ix.v_collation[1].empty());
}

// ---------------------------------------------------------------------------
// Class

TEST(SchemaModelClass, DefaultsAndSystemClasses) {
    Class c(true);
    EXPECT_TRUE(c.m_compact);
    EXPECT_TRUE(c.m_atomic);
    EXPECT_FALSE(c.m_isSystem);
    EXPECT_FALSE(c.m_fixed);
    EXPECT_FALSE(c.m_isClass);
    EXPECT_EQ(IOT_NONE, c.m_iotType);
    EXPECT_EQ(TC_STRUCT, c.m_category);

    Schema schema;
    SysDistribClass d(true);
    SysIoTTsClass ts(schema, false);
    SysIoTDelClass del(schema, false);
    for (Class const* s : {static_cast<Class const*>(&d), static_cast<Class const*>(&ts),
                           static_cast<Class const*>(&del)}) {
        EXPECT_TRUE(s->m_isSystem);
        EXPECT_TRUE(s->m_fixed);
        EXPECT_TRUE(s->m_atomic);
        EXPECT_FALSE(s->m_isClass);
    }
}

TEST(SchemaModelClass, AddSysFieldAppendsAtTheEnd) {
    Class c;
    c.v_field.push_back(makeField("a", "signed<4>", 0));
    c.addSysField("timestamp@", "unsigned<8>", true, nullptr);
    c.addSysField("src", "unsigned<8>", false, "12");
    c.addSysField("dst", "unsigned<8>", false, "");
    ASSERT_EQ(4u, c.v_field.size());

    Field const& ts = c.v_field[1];
    EXPECT_EQ(mstring("timestamp@"), ts.m_name);
    EXPECT_EQ(mstring("unsigned<8>"), ts.m_typeName);
    EXPECT_TRUE(ts.m_isHidden);
    EXPECT_EQ(1, ts.m_position);
    EXPECT_EQ(&c, ts.m_containerStruct);
    EXPECT_EQ(0u, ts.v_init.size());
    EXPECT_EQ(0, ts.m_fieldNo);
    EXPECT_EQ(-1, ts.m_precision);

    EXPECT_FALSE(c.v_field[2].m_isHidden);
    EXPECT_EQ(2, c.v_field[2].m_position);
    ASSERT_EQ(1u, c.v_field[2].v_init.size());
    EXPECT_EQ(mstring("12"), c.v_field[2].v_init[0]);
    // An empty initial value is still a value.
    EXPECT_EQ(1u, c.v_field[3].v_init.size());

    // No duplicate test.
    c.addSysField("src", "unsigned<8>", false, nullptr);
    EXPECT_EQ(5u, c.v_field.size());
}

TEST(SchemaModelClass, AddIndexRecordsNameAndAppendsACopy) {
    Class c;
    Index ix = indexOn("by_a", "a");
    c.addIndex(ix);
    ix.m_name = "changed";
    c.addIndex(indexOn("by_a", "b"));  // duplicates are the caller's business
    ASSERT_EQ(2u, c.v_index.size());
    EXPECT_EQ(mstring("by_a"), c.v_index[0].m_name);
    EXPECT_TRUE(c.indexNames.find("by_a"));
    EXPECT_FALSE(c.indexNames.find("changed"));
    EXPECT_EQ(1u, c.indexNames.v_strings.size());
}

class SchemaModelIndexed : public ::testing::Test {
protected:
    // a: nullable, its indicator is field 2; b: plain; a_indicator.
    void SetUp() override {
        Field a = makeField("a", "signed<4>", 0);
        a.m_isNullable = true;
        a.m_indicator = 2;
        c.v_field.push_back(a);
        c.v_field.push_back(makeField("b", "signed<4>", 1));
        Field ind = makeField("a_indicator", "boolean", 2);
        ind.m_isIndicator = true;
        c.v_field.push_back(ind);
    }
    Class c;
};

TEST_F(SchemaModelIndexed, IndicatorAnswersForItsNullableField) {
    c.addIndex(indexOn("by_a", "a"));
    EXPECT_TRUE(c.fieldIsIndexed(c.v_field[0]));
    EXPECT_TRUE(c.fieldIsIndexed(c.v_field[2]));
    EXPECT_FALSE(c.fieldIsIndexed(c.v_field[1]));
}

TEST_F(SchemaModelIndexed, IndicatorOfAnUnindexedFieldIsNotIndexed) {
    c.addIndex(indexOn("by_b", "b"));
    EXPECT_FALSE(c.fieldIsIndexed(c.v_field[2]));
    EXPECT_TRUE(c.fieldIsIndexed(c.v_field[1]));
}

TEST_F(SchemaModelIndexed, OnlyTheFirstStepOfAKeyPartCounts) {
    Index ix = indexOn("by_s_b", "s");
    Index::FldEl second;
    second.m_name = "b";
    ix.v_segment[0].v_fldEl.push_back(second);
    c.addIndex(ix);
    EXPECT_FALSE(c.fieldIsIndexed(c.v_field[1]));
    // Indexes without segments (not yet finished) answer nothing.
    Index bare;
    bare.m_name = "bare";
    bare.v_fieldName.push_back("b");
    c.addIndex(bare);
    EXPECT_FALSE(c.fieldIsIndexed(c.v_field[1]));
}

TEST(SchemaModelEvents, FirstEventOfEachKindOrAllOnes) {
    Class c;
    EXPECT_EQ(0xFFFFFFFFu, c.getNewEvent());
    EXPECT_EQ(0xFFFFFFFFu, c.getClassUpdateEvent());

    c.v_event.push_back(makeEvent("d1", EV_DELETE, 4));
    c.v_event.push_back(makeEvent("n1", EV_NEW, 5));
    c.v_event.push_back(makeEvent("n2", EV_NEW, 6));
    c.v_event.push_back(makeEvent("cp", EV_CHECKPOINT, 7));
    c.v_event.push_back(makeEvent("cu", EV_CLASS_UPDATE, 8));

    struct {
        std::uint32_t got;
        std::uint32_t want;
    } const cases[] = {
        {c.getNewEvent(), 5u},        {c.getDeleteEvent(), 4u},         {c.getDeleteAllEvent(), 0xFFFFFFFFu},
        {c.getCheckpointEvent(), 7u}, {c.getClassUpdateEvent(), 8u},
    };
    for (auto const& k : cases)
        EXPECT_EQ(k.want, k.got);
}

TEST(SchemaModelEvents, UpdateEventOnlyForFieldsOfTheClassItself) {
    Class c;
    c.v_field.push_back(makeField("x", "signed<4>", 0));
    c.v_field.push_back(makeField("s", "S", 1));
    Struct nested;
    nested.m_name = "S";
    nested.v_field.push_back(makeField("x", "signed<4>", 0));
    c.v_event.push_back(makeEvent("upd_s", EV_UPDATE, 2, "s"));
    c.v_event.push_back(makeEvent("upd_x", EV_UPDATE, 3, "x"));
    c.v_event.push_back(makeEvent("upd_x2", EV_UPDATE, 9, "x"));

    EXPECT_EQ(3u, c.getUpdateEvent(c, c.v_field[0]));
    EXPECT_EQ(2u, c.getUpdateEvent(c, c.v_field[1]));
    // A field of a nested struct has the same name but another container.
    EXPECT_EQ(0xFFFFFFFFu, c.getUpdateEvent(nested, nested.v_field[0]));

    Field other = makeField("y", "signed<4>", 2);
    EXPECT_EQ(0xFFFFFFFFu, c.getUpdateEvent(c, other));
}

TEST(SchemaModelEvents, EventPosIsThePlaceInTheVector) {
    Class c;
    c.v_event.push_back(makeEvent("a", EV_NEW, 10));
    c.v_event.push_back(makeEvent("b", EV_DELETE, 11));
    EXPECT_EQ(0u, c.getEventPos(10));
    EXPECT_EQ(1u, c.getEventPos(11));
    EXPECT_EQ(0xFFFFFFFFu, c.getEventPos(12));
}

// ---------------------------------------------------------------------------
// Schema look-ups

TEST(SchemaModelSchema, StartsEmptyWithAgentIdZero) {
    Schema s;
    EXPECT_EQ(mstring("0"), s.m_agentId);
    EXPECT_EQ(0, s.m_schemaOptions);
    EXPECT_EQ(0u, s.m_types->size());
    EXPECT_EQ(0u, s.m_classes->size());
    EXPECT_EQ(0u, s.m_enums->size());
    EXPECT_EQ(0u, s.m_collations->size());
    EXPECT_EQ(nullptr, s.m_oidStruct);
    EXPECT_TRUE(s.m_dbName.empty());
}

TEST(SchemaModelSchema, TypesClassesEnumsAndCollationsAreSeparateNameSpaces) {
    Schema s;
    Struct* t = new Struct("T", TC_SCALAR, 1, 1, 1, 1, "T");
    Class* c = new Class();
    c->m_name = "C";
    Enum* e = new Enum("E");
    Collation* coll = new Collation("Coll");
    s.m_types->add(t);
    s.m_classes->add(c);
    s.m_enums->add(e);
    s.m_collations->add(coll);

    EXPECT_EQ(t, s.findType("T"));
    EXPECT_EQ(c, s.findClass("C"));
    EXPECT_EQ(e, s.findEnum("E"));
    EXPECT_EQ(coll, s.findCollation("Coll"));

    EXPECT_EQ(nullptr, s.findType("C"));
    EXPECT_EQ(nullptr, s.findType("E"));
    EXPECT_EQ(nullptr, s.findClass("T"));
    EXPECT_EQ(nullptr, s.findEnum("T"));
    EXPECT_EQ(nullptr, s.findCollation("C"));
    EXPECT_EQ(nullptr, s.findType("t"));
}

TEST(SchemaModelSchema, EnumNameToIntegerFindsTheConstant) {
    Schema s;
    s.m_enums->add(makeEnum("Color", {{"RED", 0}, {"GREEN", 10}}));
    s.m_enumValueNames.insert("RED");
    s.m_enumValueNames.insert("GREEN");
    long v = -99;
    EXPECT_TRUE(s.enumNameToInteger("GREEN", &v));
    EXPECT_EQ(10, v);
    EXPECT_TRUE(s.enumNameToInteger("RED", &v));
    EXPECT_EQ(0, v);
}

TEST(SchemaModelSchema, EnumNameToIntegerOfANonConstantLeavesOutAlone) {
    Schema s;
    s.m_enums->add(makeEnum("Color", {{"RED", 3}}));
    s.m_enumValueNames.insert("RED");
    long v = 12345;
    EXPECT_FALSE(s.enumNameToInteger("BLUE", &v));
    EXPECT_EQ(12345, v);
    // Only the set of names is asked first: a constant that no set knows
    // about is not found, even though an enum holds it.
    s.m_enums->add(makeEnum("Other", {{"HIDDEN", 8}}));
    EXPECT_FALSE(s.enumNameToInteger("HIDDEN", &v));
    EXPECT_EQ(12345, v);
}

TEST(SchemaModelSchema, FirstEnumInSetOrderWins) {
    Schema s;
    // Set walks go in insertion order, so "zeta", added first, answers
    // although "alpha" sorts before it.
    s.m_enums->add(makeEnum("zeta", {{"X", 5}}));
    s.m_enums->add(makeEnum("alpha", {{"X", 7}}));
    s.m_enumValueNames.insert("X");
    long v = 0;
    EXPECT_TRUE(s.enumNameToInteger("X", &v));
    EXPECT_EQ(5, v);
}

// ---------------------------------------------------------------------------
// Ownership

namespace {

int g_destroyed = 0;

class CountedStruct : public Struct {
public:
    explicit CountedStruct(char const* name) { m_name = name; }
    ~CountedStruct() override { g_destroyed++; }
};

class CountedClass : public Class {
public:
    explicit CountedClass(char const* name) { m_name = name; }
    ~CountedClass() override { g_destroyed++; }
};

}  // namespace

TEST(SchemaModelOwnership, SchemaReleasesEveryElementOfItsSets) {
    g_destroyed = 0;
    {
        Schema s;
        s.m_types->add(new CountedStruct("A"));
        s.m_types->add(new CountedStruct("B"));
        s.m_classes->add(new CountedClass("C"));
        EXPECT_EQ(0, g_destroyed);
    }
    EXPECT_EQ(3, g_destroyed);
}

TEST(SchemaModelOwnership, StructLivesUntilTheLastHandleGoes) {
    g_destroyed = 0;
    HIComparable kept;
    {
        Schema s;
        kept = new CountedStruct("A");
        s.m_types->add(kept);
        s.m_types->add(new CountedStruct("B"));
    }
    EXPECT_EQ(1, g_destroyed);  // "B" went with the schema, "A" is still held
    EXPECT_EQ(1, kept->m_refCount);
    kept = HIComparable();
    EXPECT_EQ(2, g_destroyed);
}

TEST(SchemaModelOwnership, RejectedDuplicateIsReleasedByItsOnlyHandle) {
    g_destroyed = 0;
    Schema s;
    s.m_types->add(new CountedStruct("A"));
    EXPECT_FALSE(s.m_types->add(new CountedStruct("A")));
    EXPECT_EQ(1, g_destroyed);
    EXPECT_EQ(1u, s.m_types->size());
}

TEST(SchemaModelOwnership, ClassUnderConstructionIsFreedWithoutEnteringTheSet) {
    g_destroyed = 0;
    Schema s;
    {
        HIComparable building(new CountedClass("Dropped"));
        static_cast<Class*>(building.get())->v_field.push_back(makeField("a", "signed<4>", 0));
    }
    EXPECT_EQ(1, g_destroyed);
    EXPECT_EQ(nullptr, s.findClass("Dropped"));
}
