/* The program of doc/tour.md: books a room, lists a room's bookings and
 * counts new bookings through an event. It uses only the functions that
 * zylcomp generates from hotel.zyl; opening the database, starting and
 * committing transactions and allocating cursors belong to the database
 * runtime, so they come in as parameters here.
 *
 *     zylcomp -o generated hotel.zyl
 *     cc -std=c99 -c -Igenerated -I<runtime headers> main.c
 */
#include <string.h>

#include "hotel.h"

/* Called by the runtime for every new Booking; `param` is what was
 * given at registration. */
static ZYL_RET on_booking_made(zyl_trans_h t, Booking *obj, ZYL_EVENT_TYPE et, void *param)
{
    (void)t;
    (void)obj;
    (void)et;
    (*(unsigned *)param)++;
    return ZYL_S_OK;
}

static unsigned bookings_made;

ZYL_RET watch_bookings(zyl_trans_h t)
{
    return zyl_register_booking_made_handler(t, on_booking_made, &bookings_made);
}

/* A new guest in room `room_no` from `arrival` for `nights` nights. */
ZYL_RET book(zyl_trans_h t, const char *name, uint2 room_no, zyl_date arrival, uint2 nights)
{
    Room room;
    Guest guest;
    Booking booking;
    autoid_t guest_id;
    ZYL_RET rc;

    /* by_number is a unique tree: _find gives the one room or fails. */
    if ((rc = Room_by_number_find(t, room_no, &room)) != ZYL_S_OK)
        return rc;

    if ((rc = Guest_new(t, &guest)) != ZYL_S_OK ||
        (rc = Guest_name_put(&guest, name, (uint2)strlen(name))) != ZYL_S_OK ||
        (rc = Guest_autoid_get(&guest, &guest_id)) != ZYL_S_OK)
        return rc;

    /* Booking_new raises booking_made, since the class declares it. */
    if ((rc = Booking_new(t, &booking)) != ZYL_S_OK)
        return rc;
    if ((rc = Booking_guest_put(&booking, guest_id)) != ZYL_S_OK ||
        (rc = Booking_room_put(&booking, room_no)) != ZYL_S_OK ||
        (rc = Booking_arrival_put(&booking, arrival)) != ZYL_S_OK)
        return rc;
    return Booking_nights_put(&booking, nights);
}

/* Counts the nights booked in room `room_no` from `from` on, walking the
 * index by_room<room, arrival> from the key (room_no, from). */
ZYL_RET nights_booked(zyl_trans_h t, zyl_cursor_h c, uint2 room_no, zyl_date from, unsigned *total)
{
    Booking booking;
    uint2 room, nights;
    ZYL_RET rc;

    *total = 0;
    for (rc = Booking_by_room_search(t, c, ZYL_GE, room_no, from); rc == ZYL_S_OK; rc = zyl_cursor_next(t, c)) {
        if ((rc = Booking_from_cursor(t, c, &booking)) != ZYL_S_OK ||
            (rc = Booking_room_get(&booking, &room)) != ZYL_S_OK)
            break;
        if (room != room_no)
            break;
        if ((rc = Booking_nights_get(&booking, &nights)) != ZYL_S_OK)
            break;
        *total += nights;
    }
    zyl_cursor_close(c);
    return rc == ZYL_S_CURSOR_END || rc == ZYL_S_NOTFOUND || rc == ZYL_S_OK ? ZYL_S_OK : rc;
}

/* Holds a room for a paying session; the hold expires by itself after
 * 15 minutes (TTL_clock_time 900 sec). */
ZYL_RET hold_room(zyl_trans_h t, uint2 room_no, uint8 session)
{
    Hold hold;
    ZYL_RET rc;

    if ((rc = Hold_new(t, &hold)) != ZYL_S_OK || (rc = Hold_room_put(&hold, room_no)) != ZYL_S_OK)
        return rc;
    return Hold_session_put(&hold, session);
}
