package com.tarnwell.quorabase;

import java.lang.annotation.*;

@Retention(RetentionPolicy.RUNTIME)
@Target({})
public @interface Key {
    String value();
    boolean descending() default false;
}
