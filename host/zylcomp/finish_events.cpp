// Event finishing: event numbers, the field each update event watches, and
// the implicit update event of a class with an updated_bitmap field.
//
// Event numbers run through all classes in set order, from 0, in the order
// of each class's v_event; the implicit event takes the next one after its
// class's declared events.
#include <utility>

#include "frontend/parser.h"
#include "frontend/preprocessor.h"
#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"

void Analyzer::finishEvents() {
    int number = 0;
    forEachIn<Class>(m_schema.m_classes, [&](Class& c) {
        Field* bitmap = c.m_hasUpdatedBitmap ? c.findField("updated_bitmap") : nullptr;
        int classUpdates = 0;
        int fieldUpdates = 0;
        for (unsigned i = 0; i < c.v_event.size(); i++) {
            Event& ev = c.v_event[i];
            DeclFocus const at = focus("event", ev.m_name, ev.m_place);
            ev.m_number = number++;
            if (ev.m_kind == EV_CLASS_UPDATE) {
                // With a bitmap, a class update watches the bitmap.
                if (bitmap != nullptr)
                    ev.m_fieldName = "updated_bitmap";
                classUpdates++;
            }
            if (ev.m_kind == EV_UPDATE)
                fieldUpdates++;
            if (classUpdates > 0 && fieldUpdates > 0) {
                error1("For class #1 declared both update class event and field update event(s)", c.m_name);
                return false;
            }
            if (ev.m_fieldName.empty())
                continue;
            ev.m_field = c.findField(ev.m_fieldName);
            if (ev.m_field == nullptr) {
                error3("field #1 is not defined in #2, referenced from event #3", ev.m_fieldName, c.m_name,
                       ev.m_name);
                return false;
            }
            if (!eventFieldIsBaseType(ev))
                error3("field #1 in #2, referenced from event #3 must be of a base type: simple, string, chars, "
                       "nstring or nchars",
                       ev.m_fieldName, c.m_name, ev.m_name);
        }

        // A class with a bitmap and no update event of its own gets one.
        if (bitmap != nullptr && classUpdates == 0) {
            if (fieldUpdates > 0) {
                error1("For class #1 declared both update class event and field update event(s)", c.m_name);
                return false;
            }
            Event ev;
            ev.m_kind = EV_CLASS_UPDATE;
            ev.m_fieldName = "updated_bitmap";
            ev.m_field = bitmap;
            ev.m_number = number++;
            ev.m_name = "implUpdate" + c.m_name + "Event";
            c.v_event.push_back_moved(std::move(ev));
        }
        return true;
    });
}

// A watched field holds one value of a base type: no optional or vector
// field, and an array only for the bitmap (a one-bit array, or whatever the
// class update event watches).
bool Analyzer::eventFieldIsBaseType(Event const& ev) const {
    Field const& f = *ev.m_field;
    if (f.m_isOptional || f.m_isVector)
        return false;
    if (f.m_isArray && dictType(f, true).m_typeCode != ZYL_FT_BOOLEAN && ev.m_kind != EV_CLASS_UPDATE)
        return false;
    switch (f.m_struct->m_category) {
    case TC_SCALAR:
    case TC_CHARS:
    case TC_STRING:
    case TC_NCHARS:
    case TC_NSTRING:
    case TC_BINARY:
    case TC_VARBINARY:
        return true;
    default:
        return false;
    }
}
