#pragma once

/// What can be said of a tool beside its work, to be put between a tool class and its base.
namespace KyToolAspect {

/// A tool that belongs to the application or to the site: users can't take it away.
template <class Base>
class UnDeletable : public Base
{
public:
    using Base::Base;

    bool isDeletable() const final { return false; }
};

} // namespace KyToolAspect
