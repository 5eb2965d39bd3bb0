package com.x;

import com.tarnwell.quorabase.*;

public class shop { 
	public static Class[] classes = { 
	Item.class,
	Note.class,
	Label.class
	};
}

