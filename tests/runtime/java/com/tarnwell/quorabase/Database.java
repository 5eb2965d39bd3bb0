package com.tarnwell.quorabase;

public class Database {
    public enum IndexType { BTree, Hash, RTree, Patricia, Trigram }
    public enum EventType { OnNew, OnDelete, OnCheckpoint, OnDeleteAll, OnUpdate, OnFieldUpdate }
}
