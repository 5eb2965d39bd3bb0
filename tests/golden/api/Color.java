package com.x;

import com.tarnwell.quorabase.*;

public enum Color {
	RED,
	GREEN,
	BLUE
};

