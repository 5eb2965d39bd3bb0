package com.x;

import com.tarnwell.quorabase.*;

public class Address {
	@Dimension(16)
	public String city;
	public short zip;
}

