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

public struct Address {
}

}
