"""A page as a screen reader hears it: the browser's accessibility tree."""


class PageTree:
    """The tree at the moment it was made. What a screen reader passes over is left out."""

    def __init__(self, driver):
        nodes = driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        self.by_id = {node["nodeId"]: node for node in nodes}
        self.nodes = [node for node in nodes if not node["ignored"]]

    def all(self, role, name=None):
        """The nodes of a role, and of a name when one is given."""
        return [node for node in self.nodes if role_of(node) == role and (
            name is None or name_of(node) == name)]

    def one(self, role, name=None):
        """The only such node."""
        found = self.all(role, name)
        assert len(found) == 1, (role, name, [(role_of(node), name_of(node))
                                              for node in self.nodes if role_of(node) == role])
        return found[0]

    def below(self, node, role):
        """The nodes of a role under a node, in their order."""
        found = []
        for child in (self.by_id[key] for key in node.get("childIds", ())):
            if not child["ignored"] and role_of(child) == role:
                found.append(child)
            found += self.below(child, role)
        return found

    def text(self, node):
        """All text under a node."""
        return "".join(name_of(leaf) for leaf in self.below(node, "StaticText"))


def role_of(node):
    """The node's role."""
    return node.get("role", {}).get("value")


def name_of(node):
    """The name by which the node is told."""
    return node.get("name", {}).get("value", "")


def state_of(node, name):
    """A property of the node, such as "checked"; None: it has none."""
    for entry in node.get("properties", ()):
        if entry["name"] == name:
            return entry["value"].get("value")
    return None
