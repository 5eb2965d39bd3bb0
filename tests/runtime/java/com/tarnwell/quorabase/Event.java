package com.tarnwell.quorabase;

import java.lang.annotation.*;

@Retention(RetentionPolicy.RUNTIME)
@Target({ElementType.TYPE, ElementType.FIELD})
@Repeatable(Events.class)
public @interface Event {
    String name();
    Database.EventType type();
}
