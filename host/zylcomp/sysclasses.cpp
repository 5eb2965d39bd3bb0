// The system classes of distributed and IoT schemas: their constructors
// and the passes that add them to the schema. They are made before any
// type is resolved, so that the later passes treat them like any class.
#include "foundation/ut.h"
#include "frontend/parser.h"
#include "frontend/preprocessor.h"
#include "host/zylcomp/analyzer.h"

namespace {

bool isServer(Schema const& schema) { return schema.m_iotLevel == 1; }
bool isDevice(Schema const& schema) { return schema.m_iotLevel == 65535; }
bool isRouter(Schema const& schema) { return !isServer(schema) && !isDevice(schema); }

// A system index on the named fields, in order.
SysIndex sysIndex(char const* name, IndexType type, bool unique, std::initializer_list<char const*> fields) {
    SysIndex index(name, type, unique);
    for (char const* f : fields)
        index.addField(f);
    return index;
}

// Masks of findClassTypes.
constexpr int kDistributed = 0x800;
constexpr int kUpTable = 0x80;
constexpr int kDownTable = 0x8000;

}  // namespace

SysDistribClass::SysDistribClass(bool disk) {
    m_name = disk ? "@sys_distribs_disk" : "@sys_distribs_inmem";
    m_persistent = disk;
    m_local = true;
    addSysField("auto_oid@", "$auto_oid", false, nullptr);
    addSysField("auto_oid", "unsigned<8>", false, nullptr);
    addSysField("timestamp", "unsigned<8>", false, nullptr);
    addSysField("class_code", "unsigned<2>", false, nullptr);
    addIndex(sysIndex("ts_idx", IT_TREE, false, {"class_code", "timestamp"}));
    addIndex(sysIndex("ao_idx", IT_HASH, true, {"auto_oid", "class_code"}));
}

SysIoTTsClass::SysIoTTsClass(Schema const& schema, bool persistent) {
    m_name = "@sys_iot_ts";
    m_persistent = persistent;
    if (schema.m_autoOid != 0)
        addSysField("auto_oid@", "$auto_oid", true, nullptr);
    addSysField("type", "unsigned<1>", true, nullptr);
    addSysField("src", "unsigned<8>", true, schema.m_agentId.c_str());
    addSysField("dbid", "unsigned<8>", true, UT::n2s(static_cast<int>(schema.m_iotLevel)).c_str());
    addSysField("dst", "unsigned<8>", true, nullptr);
    addSysField("value", "unsigned<8>", true, nullptr);
    addIndex(sysIndex("idx", IT_TREE, true, {"type", "dst", "src", "dbid"}));
}

// A router's class carries the source and the destination agent, a
// server's the destination only, a device's neither.
SysIoTDelClass::SysIoTDelClass(Schema const& schema, bool persistent) {
    m_name = persistent ? "@sys_iot_del_disk" : "@sys_iot_del_inmem";
    m_persistent = persistent;
    bool const router = isRouter(schema);
    bool const toAgent = router || isServer(schema);
    if (schema.m_autoOid != 0)
        addSysField("auto_oid@", "$auto_oid", true, nullptr);
    addSysField("class_code", "unsigned<2>", true, nullptr);
    if (router) {
        addSysField("src_agent_id", "unsigned<8>", true, nullptr);
        addSysField("db_id", "unsigned<8>", true, nullptr);
    }
    if (toAgent)
        addSysField("dst_agent_id", "unsigned<8>", true, nullptr);
    addSysField("object_id", "unsigned<8>", true, nullptr);
    addSysField("timestamp", "unsigned<8>", true, nullptr);

    SysIndex ts("ts_idx", IT_TREE, false);
    if (router) {
        ts.addField("src_agent_id");
        ts.addField("db_id");
    }
    if (toAgent)
        ts.addField("dst_agent_id");
    ts.addField("timestamp");
    addIndex(std::move(ts));
    if (router)
        addIndex(sysIndex("id_idx", IT_HASH, true, {"src_agent_id", "db_id", "object_id"}));
}

// One bookkeeping class per placement that has distributed classes.
void Analyzer::finishDistribClasses() {
    if (findClassTypes(m_schema, kDistributed, true))
        m_schema.m_classes->add(HIComparable(new SysDistribClass(true)));
    if (findClassTypes(m_schema, kDistributed, false))
        m_schema.m_classes->add(HIComparable(new SysDistribClass(false)));
}

// One "@sys_iot_ts", persistent when any table is; one deletion class per
// placement that has tables.
void Analyzer::finishUpDownClasses() {
    if (!(m_schema.m_schemaOptions & Schema::OPT_IOT))
        return;
    bool persistent = findClassTypes(m_schema, kUpTable | kDownTable, true);
    bool transient = findClassTypes(m_schema, kUpTable | kDownTable, false);
    if (!persistent && !transient) {
        error("IoT schema has no 'uptable' or 'downtable' classes");
        return;
    }
    m_schema.m_classes->add(HIComparable(new SysIoTTsClass(m_schema, persistent)));
    if (persistent)
        m_schema.m_classes->add(HIComparable(new SysIoTDelClass(m_schema, true)));
    if (transient)
        m_schema.m_classes->add(HIComparable(new SysIoTDelClass(m_schema, false)));
}
