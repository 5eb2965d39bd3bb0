package com.x;

import com.tarnwell.quorabase.*;

@Persistent(disk=true)
@Indexes({@Index(name="byQty", type=Database.IndexType.BTree, keys={@Key("qty")}), @Index(name="byQtyZip", type=Database.IndexType.BTree, keys={@Key(value="qty", descending=true), @Key("addr.zip")})})
@Event(name="itemAdded", type=Database.EventType.OnNew)
@Event(name="itemRemoved", type=Database.EventType.OnDelete)
@Event(name="itemSaved", type=Database.EventType.OnCheckpoint)
public class Item {
	@Event(name="qtyChanged", type=Database.EventType.OnFieldUpdate)
	public int qty;
	public Address addr;
}

