using System;
using Quorabase;

public enum E {
	X = 0,
	Y = 1
};

public class el { 
	public static Type[] types = { 
		typeof(Flat),
		typeof(Vec)
	};
}

[Persistent(List=true)]
public class Flat {
	[Dimension(10)]
	public bool[] b;
	[Dimension(2)]
	public E[] e;
	[Dimension(2)]
	public float[] f;
}

[Persistent(Disk=true)]
[Index("byA", Type=Database.IndexType.BTree, Keys=new string[]{"ps.a"})]
public class Vec {
	public bool[] bits;
	public ushort[] nv;
	public ulong[] refs;
	public P[] ps;
	public string s;
	public W w;
	public bool nv_indicator;
}

public struct W {
	[Encoding("UTF-16")]
	[Dimension(2)]
	public string[] n;
	public string[] v;
}

public struct P {
	public int a;
}

