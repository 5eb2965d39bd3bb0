import com.tarnwell.quorabase.*;

public enum One {
	Only
};

