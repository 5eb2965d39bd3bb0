namespace NS {
using System;
using Quorabase;

public enum Color {
	RED = 0,
	GREEN = 5,
	BLUE = 2
};

public class shop { 
	public static Type[] types = { 
		typeof(Item),
		typeof(Note),
		typeof(Label)
	};
}

[Persistent(Disk=true)]
[Index("byQty", Type=Database.IndexType.BTree, Keys=new string[]{"qty"})]
[Index("byQtyZip", Type=Database.IndexType.BTree, Keys=new string[]{"qty", "addr.zip"}, Order=new string[]{"desc", "asc"})]
[Event("itemAdded", EventType.OnNew)]
[Event("itemRemoved", EventType.OnDelete)]
[Event("itemSaved", EventType.OnCheckpoint)]
public class Item {
	[Event("qtyChanged", EventType.OnFieldUpdate)]
	public uint qty;
	public Address addr;
}

[Persistent(List=true)]
public class Note {
	public ushort n;
}

[Persistent(Disk=true,List=true,Compact=true)]
[Event("labelsCleared", EventType.OnDeleteAll)]
public class Label {
	public string text;
}

public struct Address {
	[Dimension(16)]
	public string city;
	public ushort zip;
}

}
