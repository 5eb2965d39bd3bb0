import com.tarnwell.quorabase.*;

@Persistent(autoid=true)
@Indexes({@Index(name="autoid", type=Database.IndexType.Hash, unique=true, keys={@Key("autoid")})})
public class A {
	public long autoid;
	public byte i1;
	public long i8;
	public byte u1;
	public long u8;
	public float f;
	public boolean b;
	public int d;
	public long dt;
	public long n;
	public long ai;
	public E e;
	public boolean[] vb;
	@Dimension(3)
	public short[] arr;
	@Sequence(type=Sequence.Type.UInt4, order=Sequence.Order.Descending)
	public OrderedSequence<Integer> qd;
	@Sequence(type=Sequence.Type.DateTime, order=Sequence.Order.None)
	public UnorderedSequence<Long> qdt;
	@Sequence(type=Sequence.Type.Char, order=Sequence.Order.Ascending, elemSize=6)
	public OrderedSequence<String> qc;
	@Sequence(type=Sequence.Type.Char, order=Sequence.Order.None, elemSize=8)
	public UnorderedSequence<byte[]> qs;
}

