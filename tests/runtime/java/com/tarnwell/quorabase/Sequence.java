package com.tarnwell.quorabase;

import java.lang.annotation.*;

@Retention(RetentionPolicy.RUNTIME)
@Target(ElementType.FIELD)
public @interface Sequence {
    enum Type { UInt1, UInt2, UInt4, UInt8, Int1, Int2, Int4, Int8, Float, Double, Char, DateTime }
    enum Order { None, Ascending, Descending }

    Type type();
    Order order();
    int elemSize() default 0;
}
