package com.tarnwell.quorabase;

import java.lang.annotation.*;

@Retention(RetentionPolicy.RUNTIME)
@Target({})
public @interface Index {
    String name();
    Database.IndexType type();
    boolean unique() default false;
    boolean thick() default false;
    Key[] keys();
}
