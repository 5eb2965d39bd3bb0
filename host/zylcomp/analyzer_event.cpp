// Events and time-to-live rules of a class body. Event numbers and field
// look-ups wait for the finishing pass.
#include "host/zylcomp/analyzer.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

// event -> "event" "<" ("new"|"delete"|"delete_all"|"checkpoint"|"update"|field "update") ">" name ";"
void Analyzer::do_event(Class& c) {
    Event ev;
    ev.m_place = here();
    match("<");
    mstring what = m_parser->get();
    if (what == "new") {
        ev.m_kind = EV_NEW;
    } else if (what == "delete") {
        ev.m_kind = EV_DELETE;
    } else if (what == "delete_all") {
        ev.m_kind = EV_DELETE_ALL;
    } else if (what == "checkpoint") {
        ev.m_kind = EV_CHECKPOINT;
    } else if (what == "update") {
        ev.m_kind = EV_CLASS_UPDATE;
    } else {
        if (isReservedWord(what)) {
            error1("field name expected, found #1", what);
            return;
        }
        ev.m_kind = EV_UPDATE;
        ev.m_fieldName = what;
        match("update");
        for (unsigned i = 0; i < c.v_event.size(); i++) {
            if (c.v_event[i].m_fieldName == what) {
                error1("update #1 event already defined", what);
                return;
            }
        }
    }
    match(">");
    ev.m_name = m_parser->getName();
    match(";");
    // Event names are unique across the whole schema.
    if (m_schema.m_eventNames.find(ev.m_name)) {
        error1("event #1 already defined", ev.m_name);
        return;
    }
    m_schema.m_eventNames.insert(ev.m_name);
    c.v_event.push_back(ev);
}

// ttl -> "TTL_count" value ";" | "TTL_clock_time" value ("sec"|"ms"|"us") ";"
// Each adds a hidden unsigned<8> field holding the value, and a tree on it.
void Analyzer::do_ttl(Class& c) {
    mstring condition = m_parser->get();
    mstring value = m_parser->get();
    char const* fieldName;
    char const* indexName;
    bool unique;
    if (condition == "TTL_count") {
        fieldName = "ttl_count@";
        indexName = "ttl_count_idx@";
        unique = true;
    } else if (condition == "TTL_clock_time") {
        fieldName = "ttl_timestamp@";
        indexName = "ttl_timestamp_idx@";
        unique = false;
        // Kept in microseconds. The message says "s" where the word is
        // "sec"; both stay as they are.
        mstring unit = m_parser->get();
        if (unit == "sec")
            value += "000000";
        else if (unit == "ms")
            value += "000";
        else if (unit != "us")
            error("invalid TTL_clock_time time unit (must be s, ms or us)");
        // Zero, and anything written in hex or octal, is refused.
        if (value.c_str()[0] == '0')
            error1("invalid TTL_clock_time value #1", value);
    } else {
        // The body loop only hands over the two words above.
        error1("unexpected TTL condition #1", condition);
        return;
    }
    if (c.findField(fieldName))
        error1("#1 already defined", condition);

    SysIndex index(indexName, IT_TREE, unique);
    c.addSysField(fieldName, "unsigned<8>", true, value.c_str());
    index.addField(fieldName);
    c.addIndex(std::move(index));
    match(";");
}
