// Declarations of the C# binding that generated C# names; for compile checks only.
using System;

namespace Quorabase
{
    public class Database { public enum IndexType { BTree, Hash, RTree, Patricia, Trigram } }

    public enum EventType { OnNew, OnDelete, OnCheckpoint, OnDeleteAll, OnUpdate, OnFieldUpdate }

    public enum SequenceOrder { None, Ascending, Descending }

    [AttributeUsage(AttributeTargets.Class)]
    public class PersistentAttribute : Attribute { public bool Disk, List, AutoID, Compact, Local, Distributed; }

    [AttributeUsage(AttributeTargets.Class, AllowMultiple = true)]
    public class IndexAttribute : Attribute
    {
        public IndexAttribute(string name) { Name = name; }
        public string Name;
        public Database.IndexType Type;
        public bool Unique, Thick;
        public string[] Keys, Order;
    }

    [AttributeUsage(AttributeTargets.Class | AttributeTargets.Field, AllowMultiple = true)]
    public class EventAttribute : Attribute
    {
        public EventAttribute(string name, EventType type) { Name = name; Type = type; }
        public string Name;
        public EventType Type;
    }

    [AttributeUsage(AttributeTargets.Field)]
    public class EncodingAttribute : Attribute
    {
        public EncodingAttribute(string name) { Name = name; }
        public string Name;
    }

    [AttributeUsage(AttributeTargets.Field)]
    public class DimensionAttribute : Attribute
    {
        public DimensionAttribute(int size) { Size = size; }
        public int Size;
    }

    [AttributeUsage(AttributeTargets.Field)]
    public class BlobAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.Field)]
    public class SequenceAttribute : Attribute
    {
        public SequenceOrder Order;
        public int ElemSize;
    }

    public class OrderedSequence<T> { }

    public class UnorderedSequence<T> { }
}
