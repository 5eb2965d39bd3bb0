package com.tarnwell.quorabase;

public class UnorderedSequence<T> {
}
