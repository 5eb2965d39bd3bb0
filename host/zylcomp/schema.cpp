#include "host/zylcomp/schema.h"

#include <cassert>
#include <cstring>
#include <utility>

// ---------------------------------------------------------------------------
// Ordering: every set of the model is keyed by name.

bool Enum::less(IComparable const* other) const { return m_name < static_cast<Enum const*>(other)->m_name; }

bool Collation::less(IComparable const* other) const {
    return m_name < static_cast<Collation const*>(other)->m_name;
}

bool Struct::less(IComparable const* other) const { return m_name < static_cast<Struct const*>(other)->m_name; }

// ---------------------------------------------------------------------------
// Struct

namespace {

bool categoryIsDynamic(TypeCategory category) {
    switch (category) {
    case TC_STRING:
    case TC_BLOB:
    case TC_NSTRING:
    case TC_DIRECT:
    case TC_UNUSED:
    case TC_VARBINARY:
        return true;
    default:
        return false;
    }
}

}  // namespace

Struct::Struct(mstring const& name, TypeCategory category, int compactSize, int largeSize, int compactAlign,
               int largeAlign, mstring const& cType)
    : m_name(name), m_category(category), m_cType(cType) {
    if (category < 1 || category > 16)
        throw " illegal category ";
    m_finished = true;
    m_isDynamic = categoryIsDynamic(category);
    m_hasBlobs = category == TC_BLOB;
    m_layout.compact.m_size = FSize(compactSize);
    m_layout.large.m_size = FSize(largeSize);
    m_layout.compact.m_align = FSize(compactAlign);
    m_layout.large.m_align = FSize(largeAlign);
}

Struct::Struct(Struct const& other) : IComparable() { *this = other; }

// Member by member, so that the reference count of the base stays with the
// object: the oid type is copied onto the "ref" struct that the type set
// already owns.
Struct& Struct::operator=(Struct const& other) {
    if (this == &other)
        return *this;
    m_name = other.m_name;
    m_category = other.m_category;
    m_finished = other.m_finished;
    m_isClass = other.m_isClass;
    m_isDynamic = other.m_isDynamic;
    m_hasBlobs = other.m_hasBlobs;
    m_hasSequences = other.m_hasSequences;
    m_hasInit = other.m_hasInit;
    v_field = other.v_field;
    m_layout = other.m_layout;
    m_layoutBusy = other.m_layoutBusy;
    m_layoutDone = other.m_layoutDone;
    m_maxFieldNameLen = other.m_maxFieldNameLen;
    m_outputWidth = other.m_outputWidth;
    m_cType = other.m_cType;
    v_owner = other.v_owner;
    m_isDirect = other.m_isDirect;
    m_hasDirect = other.m_hasDirect;
    m_noApi = other.m_noApi;
    m_packed = other.m_packed;
    m_dictNo = other.m_dictNo;
    m_isEnum = other.m_isEnum;
    m_hasRefNames = other.m_hasRefNames;
    m_hasStructFields = other.m_hasStructFields;
    m_hasUpdatedBitmap = other.m_hasUpdatedBitmap;
    m_place = other.m_place;
    return *this;
}

Field* Struct::findField(mstring const& name) { return findField(name.c_str()); }

Field* Struct::findField(char const* name) {
    // The first two characters are compared inline, strcmp only sees names
    // that agree in them.
    char const* key = name ? name : "";
    for (unsigned i = 0; i < v_field.size(); i++) {
        char const* n = v_field[i].m_name.c_str();
        if (n[0] == key[0] && (n[0] == '\0' || (n[1] == key[1] && (n[1] == '\0' || std::strcmp(n + 2, key + 2) == 0))))
            return &v_field[i];
    }
    return nullptr;
}

Field const* Struct::findField(mstring const& name) const { return const_cast<Struct*>(this)->findField(name); }

void Struct::addOwner(Class* owner) {
    for (unsigned i = 0; i < v_owner.size(); i++)
        if (v_owner[i] == owner)
            return;
    v_owner.push_back(owner);
}

// ---------------------------------------------------------------------------
// Class

bool Class::fieldIsIndexed(Field const& f) const {
    Field const* field = &f;
    while (field->m_isIndicator) {
        Field const* owner = nullptr;
        for (unsigned i = 0; i < v_field.size() && owner == nullptr; i++)
            if (v_field[i].m_isNullable && v_field[i].m_indicator == field->m_position)
                owner = &v_field[i];
        if (owner == nullptr) {
            // The analyzer never makes an indicator without its nullable field.
            assert(false);
            return false;
        }
        field = owner;
    }
    for (unsigned i = 0; i < v_index.size(); i++) {
        Index const& index = v_index[i];
        for (unsigned k = 0; k < index.v_segment.size(); k++) {
            Index::Segment const& segment = index.v_segment[k];
            if (segment.v_fldEl.size() > 0 && segment.v_fldEl[0].m_name == field->m_name)
                return true;
        }
    }
    return false;
}

std::uint32_t Class::firstEventOfKind(int kind) const {
    for (unsigned i = 0; i < v_event.size(); i++)
        if (v_event[i].m_kind == kind)
            return static_cast<std::uint32_t>(v_event[i].m_number);
    return NO_EVENT;
}

std::uint32_t Class::getNewEvent() const { return firstEventOfKind(EV_NEW); }
std::uint32_t Class::getDeleteEvent() const { return firstEventOfKind(EV_DELETE); }
std::uint32_t Class::getDeleteAllEvent() const { return firstEventOfKind(EV_DELETE_ALL); }
std::uint32_t Class::getCheckpointEvent() const { return firstEventOfKind(EV_CHECKPOINT); }
std::uint32_t Class::getClassUpdateEvent() const { return firstEventOfKind(EV_CLASS_UPDATE); }

std::uint32_t Class::getUpdateEvent(Struct const& s, Field const& f) const {
    if (&s != this)
        return NO_EVENT;
    for (unsigned i = 0; i < v_event.size(); i++)
        if (v_event[i].m_kind == EV_UPDATE && v_event[i].m_fieldName == f.m_name)
            return static_cast<std::uint32_t>(v_event[i].m_number);
    return NO_EVENT;
}

std::uint32_t Class::getEventPos(int number) const {
    for (unsigned i = 0; i < v_event.size(); i++)
        if (v_event[i].m_number == number)
            return i;
    return NO_EVENT;
}

void Class::addSysField(char const* name, char const* type, bool hidden, char const* initial) {
    Field f;
    f.m_name = name;
    f.m_typeName = type;
    f.m_containerStruct = this;
    f.m_isHidden = hidden;
    f.m_position = static_cast<int>(v_field.size());
    if (initial != nullptr)
        f.v_init.push_back(initial);
    v_field.push_back_moved(std::move(f));
}

void Class::addIndex(Index const& index) {
    indexNames.insert(index.m_name);
    v_index.push_back(index);
}

void Class::addIndex(Index&& index) {
    indexNames.insert(index.m_name);
    v_index.push_back_moved(std::move(index));
}

// ---------------------------------------------------------------------------
// System records

SysIndex::SysIndex(char const* name, IndexType type, bool unique) {
    m_name = name;
    m_type = type;
    m_unique = unique;
    m_isSystem = true;
    ecount = type == IT_HASH ? 1000 : 0;
}

void SysIndex::addField(char const* name) {
    v_fieldName.push_back(name);
    v_desc.push_back(false);
    v_nocase.push_back(false);
    v_collation.push_back(mstring());
}

SysClass::SysClass(bool compact) : Class(compact) {
    m_isSystem = true;
    m_fixed = true;
    m_atomic = true;
}

// ---------------------------------------------------------------------------
// Schema

Schema::Schema()
    : m_agentId("0"),
      m_types(ISet::create()),
      m_classes(ISet::create()),
      m_enums(ISet::create()),
      m_collations(ISet::create()) {}

// Deleting a set releases its handles, and with them every element nobody
// else holds.
Schema::~Schema() {
    delete m_collations;
    delete m_enums;
    delete m_classes;
    delete m_types;
}

// The look-ups go by the name alone: no key record (and no copy of the
// name) is built. The sets find named elements through their name table;
// the comparison serves a set that has no table. The table relies on names
// staying put: they change only when the generators prefix them, after the
// last look-up, and while "ref" is copied from the oid type, which gives it
// its own name back at once.
namespace {

template <class T>
int compareName(IComparable const* element, void const* key) {
    return std::strcmp(static_cast<T const*>(element)->m_name.c_str(), static_cast<char const*>(key));
}

template <class T>
T* findNamed(ISet* set, mstring const& name) {
    HIComparable* found = set->findName(name.c_str(), &compareName<T>);
    return found ? static_cast<T*>(found->get()) : nullptr;
}

}  // namespace

Struct* Schema::findType(mstring const& name) const { return findNamed<Struct>(m_types, name); }

Struct* Schema::findType(mstring const& name, Enum** e) const {
    char const* key = name.c_str();
    std::uint32_t const hash = ISet::nameHash(key);
    HIComparable* en = m_enums->findName(key, &compareName<Enum>, hash);
    *e = en ? static_cast<Enum*>(en->get()) : nullptr;
    HIComparable* t = m_types->findName(key, &compareName<Struct>, hash);
    return t ? static_cast<Struct*>(t->get()) : nullptr;
}

Class* Schema::findClass(mstring const& name) const { return findNamed<Class>(m_classes, name); }

Enum* Schema::findEnum(mstring const& name) const { return findNamed<Enum>(m_enums, name); }

Collation* Schema::findCollation(mstring const& name) const { return findNamed<Collation>(m_collations, name); }

bool Schema::enumNameToInteger(mstring const& name, long* out) {
    if (!m_enumValueNames.find(name))
        return false;
    ISet::Pos* pos = m_enums->first();
    bool found = false;
    for (; pos->valid() && !found; pos->next()) {
        Enum const* e = static_cast<Enum const*>(pos->get().get());
        for (unsigned i = 0; i < e->v_elem.size(); i++) {
            if (e->v_elem[i].m_name == name) {
                *out = e->v_elem[i].m_value;
                found = true;
                break;
            }
        }
    }
    delete pos;
    return found;
}

DiagDeclaration Schema::declaration(char const* kind, mstring const& name, DeclPlace const& at) const {
    DiagDeclaration d;
    d.kind = kind;
    d.name = name.c_str();
    if (at.m_file >= 0) {
        d.file = v_placeFile[at.m_file].c_str();
        d.line = at.m_line;
    }
    return d;
}
