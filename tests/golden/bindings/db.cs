using System;
using Quorabase;

public enum E {
	P = 0
};

public enum Falling {
	Z = 9,
	Y = 3,
	X = 1
};

public enum One {
	Only = 4
};

public class db { 
	public static Type[] types = { 
		typeof(A)
	};
}

[Persistent(AutoID=true)]
[Index("autoid", Type=Database.IndexType.Hash, Unique=true, Keys=new string[]{"autoid"})]
public class A {
	public ulong autoid;
	public sbyte i1;
	public long i8;
	public byte u1;
	public ulong u8;
	public float f;
	public bool b;
	public uint d;
	public ulong dt;
	public long n;
	public ulong ai;
	public E e;
	public bool[] vb;
	[Dimension(3)]
	public ushort[] arr;
	[Sequence(Order=SequenceOrder.Descending)]
	public OrderedSequence<uint> qd;
	public UnorderedSequence<ulong> qdt;
	[Sequence(Order=SequenceOrder.Ascending, ElemSize=6)]
	public OrderedSequence<string> qc;
	public UnorderedSequence<byte[]> qs;
}

