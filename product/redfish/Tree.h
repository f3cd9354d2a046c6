#pragma once

#include "Resources.h"
#include "redfish/Service.h"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace redfish {

/// All resources that a board has, by path without "/" at its end. Each is written by whoever asks first.
class Service::Tree final {
  public:
    using Make = Value (*)(const World&, const Subject&);

    struct Written {
        std::shared_ptr<const std::string> text;
        std::string etag;
    };

    class Node final {
      public:
        Node(Subject subject, Make make) : m_Subject(std::move(subject)), m_Make(make) {}

        [[nodiscard]] Kind TheKind() const { return m_Subject.kind; }
        [[nodiscard]] Value ValueIn(const World& world) const { return m_Make(world, m_Subject); }
        [[nodiscard]] const Written& WrittenIn(const World& world) const;

      private:
        Subject m_Subject;
        Make m_Make;
        mutable std::once_flag m_Once;
        mutable Written m_Written;
    };

    explicit Tree(std::shared_ptr<const board::Board> board);

    [[nodiscard]] const World& TheWorld() const { return m_World; }
    /// Null where there is none.
    [[nodiscard]] const Node* Find(const std::string& path) const;

  private:
    void Add(Kind kind, const std::string& path, Make make, std::size_t controller = 0, std::size_t part = 0);
    void AddFixed();
    void AddStorage(std::size_t controller);

    World m_World;
    std::unordered_map<std::string, Node> m_Nodes;
};

}  // namespace redfish
