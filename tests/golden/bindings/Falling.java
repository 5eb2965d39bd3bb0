import com.tarnwell.quorabase.*;

public enum Falling {
	Z,
	Y,
	X
};

