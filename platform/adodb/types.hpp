// The values that ADO's properties and arguments take.
#pragma once

namespace ADODB {

enum class CursorType { ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };
enum class LockType { ReadOnly = 1, Pessimistic = 2, Optimistic = 3, BatchOptimistic = 4 };
enum class CursorLocation { Server = 2, Client = 3 };
enum class IsolationLevel {
  ReadUncommitted = 256,
  ReadCommitted = 4096,
  RepeatableRead = 65536,
  Serializable = 1048576
};
enum class ObjectState { Closed = 0, Open = 1 };
enum class Affect { Current = 1 };

// What is told of the rows that a deletion removes.
enum class Deleted { Keys, Rows };

// Options of Open and Execute.
constexpr int kOptionsUnspecified = -1;
constexpr int kCommandText = 1;
constexpr int kExecuteNoRecords = 128;  // the statement returns no rows, or they are not wanted

}  // namespace ADODB
