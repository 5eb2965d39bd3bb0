/* Walks a generated dictionary the way the runtime reads it and prints every
 * record as one line of numbers, so that tests can compare what the
 * generated tables hold, not only how they read. Built with the generated
 * source: cc -DGET_DICTIONARY={db}_get_dictionary dictwalk.c {db}.c */
#include <stdio.h>

#include "zyl.h"

zyl_dictionary_h GET_DICTIONARY(void);

static const char* className(const zyl_dictionary_t* d, unsigned code) {
    return d->str_class_names != 0 ? d->str_class_names[code] : "?";
}

int main(void) {
    const zyl_dictionary_t* d = GET_DICTIONARY();
    unsigned i, k;

    printf("dictionary version=%u.%u.%u magic=%u flags=%u oid=%u auto_oid=%u same=%d\n", d->version_major,
           d->version_minor, d->version_build, d->magic_number, d->flags, d->oid_is_supported,
           d->auto_oid_supported, GET_DICTIONARY() == d);
    printf("counts classes=%u lists=%u autoids=%u histories=%u userdefs=%u max_indexes=%u structs=%u "
           "indexes=%u events=%u colls=%u\n",
           d->n_class_codes, d->n_list_indexes, d->n_autoid_indexes, d->n_history_indexes, d->n_userdef_indexes,
           d->max_numof_indexes_per_obj, d->n_structs, d->n_desc_indexes, d->n_desc_events, d->n_desc_colls);
    printf("sizes oid_est=%u ha_est=%u oid_sizeof=%u oid_layout=%u offs=%u/%u size=%u/%u\n",
           d->num_oid_estimation, d->num_HA_estimation, d->exact_OID_sizeof, d->layout_OID_size,
           d->sizeof_zyl_offs_t[0], d->sizeof_zyl_offs_t[1], d->sizeof_zyl_size_t[0], d->sizeof_zyl_size_t[1]);

    for (i = 0; i <= d->n_class_codes; i++) {
        const zyl_dict_class_info_t* c = &d->v_class_info[i];
        printf("class %u %s: indexes=%u..%u list=%u autoid=%u fixed=%u autoid_offset=%u history=%u/%u/%u "
               "events=%u..%u flags=0x%x struct=%s init_size=%u auto_oid_offset=%u\n",
               i, i == 0 ? "-" : className(d, i), c->first_index_num, c->last_index_num, c->list_index_num,
               c->autoid_index_num, c->fixedsize, c->autoid_offset, c->history_index_num, c->history_length,
               c->history_offset, c->first_event_num, c->last_event_num, c->flags,
               c->struct_ptr != 0 ? c->struct_ptr->name : "-", (unsigned)c->init_size, c->auto_oid_offset);
    }
    for (i = 0; i < d->n_structs; i++) {
        const zyl_dict_struct_t* s = &d->v_all_struct[i];
        printf("struct %s: flags=0x%x fields=%u c=%u/%u u=%u/%u\n", s->name, s->flags, s->n_fields, s->c_size,
               s->c_align, s->u_size, s->u_align);
        for (k = 0; k < s->n_fields; k++) {
            const zyl_dict_field_t* f = &s->fields[k];
            printf("field %s.%s: c=%u@%u/%u u=%u@%u/%u type=%u flags=0x%x array=%u struct=%d size=%u ref=%u "
                   "init=%u order=%u no=%u event=%u indicator=%u precision=%u seq=%u/%u\n",
                   s->name, f->name, f->layout.c_size, f->layout.c_offset, f->layout.c_align, f->layout.u_size,
                   f->layout.u_offset, f->layout.u_align, f->field_el_type, f->flags, f->array_size,
                   f->struct_num, f->field_size, f->refto_class, f->init_index, f->order_no, f->no, f->event_id,
                   f->indicator, f->precision, f->seq_order, f->seq_elem_size);
        }
    }
    for (i = 0; i < d->n_desc_indexes; i++) {
        const zyl_dict_index_t* x = &d->v_desc_indexes[i];
        printf("index %u %s: class=%u impl=%u keys=%u vect=%d flags=0x%x estimate=%lld userdef=%u\n", i,
               d->str_index_names != 0 ? d->str_index_names[i] : "?", x->class_code, x->impl_no, x->numof_fields,
               (int)x->vect_field_offset, x->flags, (long long)x->numof_keys_estimate, x->userdef_id);
        for (k = 0; k < x->numof_fields; k++) {
            const zyl_dict_index_field_t* f = &x->fields[k];
            printf("key %u.%u: offset=%u vect=%d indicator=%d size=%u type=%u flags=0x%x no=%u collation=%u\n", i,
                   k, f->field_offset, (int)f->vect_field_offset, (int)f->indicator_offset, f->field_size,
                   f->field_type, f->fld_flags, f->fld_no, f->collation_id);
        }
    }
    for (i = 0; i < d->n_desc_events; i++) {
        const zyl_dict_event_t* e = &d->v_desc_events[i];
        printf("event %u: class=%u flags=0x%x offset=%u size=%u type=%u no=%u\n", i, e->class_code, e->flags,
               e->field_offset, e->field_size, e->field_type, e->fld_no);
    }
    for (i = 0; i < d->n_desc_colls; i++)
        printf("collation %u %s: type=%u\n", i, d->v_desc_colls[i].name, d->v_desc_colls[i].type);
    printf("init_i:");
    for (i = 0; i < d->init_i_data_n; i++)
        printf(" %d", d->init_i_data.ptr[i]);
    printf("\ninit_d:");
    for (i = 0; i < d->init_d_data_n; i++)
        printf(" %g", d->init_d_data.ptr[i]);
    printf("\n");
    return 0;
}
