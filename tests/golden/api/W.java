import com.tarnwell.quorabase.*;

public class W {
	@Encoding("UTF-16")
	@Dimension(2)
	public String[] n;
	public String[] v;
}

