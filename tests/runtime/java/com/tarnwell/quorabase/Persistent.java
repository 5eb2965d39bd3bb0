// Declarations of the Java binding that generated Java names; for compile checks only.
package com.tarnwell.quorabase;

import java.lang.annotation.*;

@Retention(RetentionPolicy.RUNTIME)
@Target(ElementType.TYPE)
public @interface Persistent {
    boolean disk() default false;
    boolean list() default false;
    boolean autoid() default false;
    boolean compact() default false;
    boolean local() default false;
    boolean distributed() default false;
}
