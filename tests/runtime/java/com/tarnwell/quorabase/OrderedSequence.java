package com.tarnwell.quorabase;

public class OrderedSequence<T> {
}
