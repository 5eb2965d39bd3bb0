package com.x;

import com.tarnwell.quorabase.*;

public class Address {
}

