/* The application side of the example: code written against the interface
 * that zylcomp generates from schema/inventory.zyl. The class handle Item,
 * its code, the enum Unit and Item_new all come from inventory.h. */
#include <stdio.h>

#include "inventory.h"

/* Adds one item inside a transaction that the runtime has opened. */
static ZYL_RET add_item(zyl_trans_h t)
{
    Item item;
    return Item_new(t, &item);
}

int main(void)
{
    Unit unit = KILOGRAM;
    printf("class Item has code %d; unit %d\n", Item_code, (int)unit);
    /* A real program opens the database and a transaction first. */
    return add_item(NULL) == 0 ? 0 : 1;
}
