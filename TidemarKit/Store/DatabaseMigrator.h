#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tidemar {

class Database;
class DatabaseQueue;

/// Brings a database to its present schema by named steps, each of which it sees once. Which ones
/// it has seen stands in its table `grdb_migrations`; names there that aren't registered are left
/// alone. Never erases anything.
class DatabaseMigrator {
 public:
  using Migration = std::function<void(Database&)>;

  /// Migrations apply in the order of their registration.
  void registerMigration(std::string identifier, Migration migration);

  /// Applies what is missing, each migration in a transaction of its own that also notes its
  /// identifier. The first failure is thrown and ends it; what was applied before stays.
  void migrate(DatabaseQueue& queue) const;

 private:
  struct Registered {
    std::string identifier;
    Migration migration;
  };

  std::vector<Registered> _migrations;
};

}  // namespace tidemar
