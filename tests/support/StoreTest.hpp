#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <variant>

#include "TemporaryFolder.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel::testing {

// A fresh store of its own for each test, opened as the application opens it.
class StoreTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::unique_ptr<TesselStore> store = [this] {
        auto result = openTesselStore(TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path()));
        return std::move(std::get<std::unique_ptr<TesselStore>>(result));
    }();
    ModelContext& context = store->context();
};

}  // namespace tessel::testing
