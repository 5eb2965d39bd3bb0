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

	[Event("qtyChanged", EventType.OnFieldUpdate)]
	public Address addr;
	public string text;
public struct Address {
	[Dimension(16)]
	public string city;
}

}
