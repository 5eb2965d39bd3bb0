// The schema object model: what its constructors derive, copies, event and
// enum look-ups, and ownership.
#include <gtest/gtest.h>

#include "host/zylcomp/schema.h"

namespace {

int g_destroyed = 0;

struct CountedStruct : Struct {
    explicit CountedStruct(char const* name) { m_name = name; }
    ~CountedStruct() override { g_destroyed++; }
};

Enum* makeEnum(char const* name, char const* elem, int value) {
    Enum* e = new Enum(name);
    Enum::Elem el;
    el.m_name = elem;
    el.m_value = value;
    e->v_elem.push_back(el);
    return e;
}

}  // namespace

// Dynamic and blob flags follow the category; one outside 1..16 throws.
TEST(SchemaModel, StructFlagsFollowTheCategory) {
    struct {
        TypeCategory category;
        bool dynamic, blobs;
    } const cases[] = {{TC_SCALAR, false, false}, {TC_STRING, true, false}, {TC_BLOB, true, true},
                       {TC_SEQUENCE, false, false}, {TC_DIRECT, true, false}, {TC_VARBINARY, true, false}};
    for (auto const& c : cases) {
        Struct s("t", c.category, 3, 5, 1, 2, "ct");
        EXPECT_EQ(c.dynamic, s.m_isDynamic) << c.category;
        EXPECT_EQ(c.blobs, s.m_hasBlobs) << c.category;
        EXPECT_TRUE(s.m_finished);
    }
    for (int category : {0, 17}) {
        try {
            Struct s("x", static_cast<TypeCategory>(category), 1, 1, 1, 1, "");
            ADD_FAILURE() << "no throw for category " << category;
        } catch (char const* what) {
            EXPECT_STREQ(" illegal category ", what);
        }
    }
}

// The oid type is copied onto the "ref" struct the type set already owns:
// everything but the reference count, the fields deeply.
TEST(SchemaModel, AssignmentCopiesEverythingButTheReferenceCount) {
    Struct oid;
    oid.m_name = "Oid";
    Field id;
    id.m_name = "id";
    oid.v_field.push_back(id);
    oid.m_isDynamic = false;
    oid.m_refCount = 7;
    Struct* ref = new Struct("ref", TC_OID_REF, 0, 0, 0, 0, "");
    HIComparable holder(ref);
    *ref = oid;
    EXPECT_EQ(1, ref->m_refCount);
    EXPECT_EQ(mstring("Oid"), ref->m_name);
    EXPECT_FALSE(ref->m_isDynamic);
    oid.v_field[0].m_name = "changed";
    EXPECT_EQ(mstring("id"), ref->v_field[0].m_name);
    EXPECT_EQ(0, Struct(oid).m_refCount);
}

// The first event of a kind answers; a field's update event only for a
// field of the class itself, not for a same-named one of a nested struct.
TEST(SchemaModel, EventLookUps) {
    Class c;
    EXPECT_EQ(0xFFFFFFFFu, c.getNewEvent());
    Field x;
    x.m_name = "x";
    c.v_field.push_back(x);
    Struct nested;
    nested.v_field.push_back(x);
    int const kinds[][2] = {{EV_DELETE, 4}, {EV_NEW, 5}, {EV_NEW, 6}, {EV_UPDATE, 3}, {EV_UPDATE, 9}};
    for (auto const& k : kinds) {
        Event e;
        e.m_kind = k[0];
        e.m_number = k[1];
        e.m_fieldName = k[0] == EV_UPDATE ? "x" : "";
        c.v_event.push_back(e);
    }
    EXPECT_EQ(5u, c.getNewEvent());
    EXPECT_EQ(4u, c.getDeleteEvent());
    EXPECT_EQ(0xFFFFFFFFu, c.getCheckpointEvent());
    EXPECT_EQ(3u, c.getUpdateEvent(c, c.v_field[0]));
    EXPECT_EQ(0xFFFFFFFFu, c.getUpdateEvent(nested, nested.v_field[0]));
    EXPECT_EQ(2u, c.getEventPos(6));
}

// Only names in the set of constants are looked up, and the first enum in
// insertion order answers, not the first by name.
TEST(SchemaModel, EnumNameToInteger) {
    Schema s;
    s.m_enums->add(makeEnum("zeta", "X", 5));
    s.m_enums->add(makeEnum("alpha", "X", 7));
    s.m_enums->add(makeEnum("other", "HIDDEN", 8));
    s.m_enumValueNames.insert("X");
    long v = 12345;
    EXPECT_FALSE(s.enumNameToInteger("HIDDEN", &v));
    EXPECT_EQ(12345, v);
    EXPECT_TRUE(s.enumNameToInteger("X", &v));
    EXPECT_EQ(5, v);
}

// The schema releases its elements; a struct lives on while a handle
// holds it; a refused duplicate goes with its only handle.
TEST(SchemaModel, Ownership) {
    g_destroyed = 0;
    HIComparable kept;
    {
        Schema s;
        kept = new CountedStruct("A");
        s.m_types->add(kept);
        s.m_types->add(new CountedStruct("B"));
        EXPECT_FALSE(s.m_types->add(new CountedStruct("A")));
        EXPECT_EQ(1, g_destroyed);
    }
    EXPECT_EQ(2, g_destroyed);
    EXPECT_EQ(1, kept->m_refCount);
    kept = HIComparable();
    EXPECT_EQ(3, g_destroyed);
}
