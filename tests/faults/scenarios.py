"""The small projects that the fault matrix runs a program on."""

import dataclasses
import os

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


@dataclasses.dataclass(frozen=True)
class Link:
    """A symbolic link in a tree; every other value is the bytes of a file."""

    target: str


@dataclasses.dataclass
class Scenario:
    name: str
    arguments: list
    tree: dict
    # The files that the run replaces, each with the path that its backups are named after, or None.
    inputs: dict = dataclasses.field(default_factory=dict)
    program: str = "vornu-upgrade"
    # Sidecars that get a random identity.
    random: tuple = ()
    # Of an undisturbed run, and of one behind it.
    exit_codes: tuple = (0, 0)
    # Also tried with two processes at once.
    races: bool = False


def example(path):
    with open(os.path.join(REPOSITORY, "examples", "Content", path), "rb") as file:
        return file.read()


def sidecar(number, importer="native"):
    guid = "b4a81d36-0e5f-4c92-a7d8-51c6f23e92%02d" % number
    return f'vmeta 1\nguid {guid}\nimporter {importer} 1\nsettings\nmax_size "0"\nend\n'.encode()


LAMP_V1 = b"""scene_version 1
entity "" "Lamp"
transform 0 1 0
mesh_renderer "builtin:Cube" "content:Materials/stone.vmat" ""
point_light 1 0.8 0.55 16 11
end_entity
"""
WELL_V3 = b"""scene_version 3
environment "content:Textures/linked.png" 0.25 0.3 40 1
entity "" "Well"
mesh_renderer "content:Models/well.vmesh" "guid:b4a81d36-0e5f-4c92-a7d8-51c6f23e9201" ""
mesh_material_slot 1 "content:Materials/STONE.vmat"
end_entity
"""
MIXED_V6 = b"""scene_version 6
environment "content:Textures/sky.png" 1 1 0 1
entity "91a6b3f8-0c57-4d2e-8e11-7b40c5d9a601" "Orchard"
parent ""
component_schema "TransformComponent" 1 0
end_component_schema
directional_light 1 0.98 0.92 2.6 1 1
end_entity
"""


def assets():
    """With and without a sidecar; one behind a link, one the copy of another with its sidecar."""
    return {
        "Content/Materials/oak.vmat": b"oak",
        "Content/Materials/oak.vmat.vmeta": sidecar(1),
        "Content/Materials/stone.vmat": b"stone",
        "Content/Models/well.vmesh": example("Models/well.vmesh"),
        "Content/Models/well.vmesh.vmeta": sidecar(2),
        "Content/Textures/sky.png": b"sky",
        "Content/Textures/linked.png": Link("cobble.bin"),
        "Content/Textures/cobble.bin": b"cobble",
    }


def single(name, arguments, extra=(), **more):
    tree = {"Content/well.vscene": WELL_V3, **assets(), **dict(extra)}
    more.setdefault("inputs", {"Content/well.vscene": "Content/well.vscene"})
    return Scenario(name, arguments, tree, **more)


def large_scene():
    """Several times what is read or written at once."""
    names = ["Orchard tree %04d %s" % (number, "of a long row " * 12) for number in range(2500)]
    return b"scene_version 3\n" + b"".join(b'entity "" "%s"\nend_entity\n' % name.encode() for name in names)


def all_scenarios():
    marker = example("Prefabs/marker.vprefab")
    brass = {"Content/brass.vmat": b"brass", "Content/brass.vmat.vmeta": sidecar(4)}  # of the marker
    levels = {
        "Content/Levels/lamp.vscene": LAMP_V1,
        "Content/Levels/well.vscene": WELL_V3,
        "Content/Prefabs/orchard.vprefab": MIXED_V6,
        "Content/Levels/marker.vscene": marker,
    }
    in_place = {path: path for path, text in levels.items() if text != marker}
    project = {**assets(), **brass, **levels}
    return [
        Scenario(
            "project",
            ["Content"],
            {**project, "Content/Textures/copy.png": b"copy", "Content/Textures/copy.png.vmeta": sidecar(2)},
            in_place,
            random=("Content/Textures/copy.png.vmeta",),
            races=True,
        ),
        Scenario("no-backup", ["--no-backup", "Content"], project, dict.fromkeys(in_place)),
        single("output", ["--output", "out.vscene", "Content/well.vscene"], {"out.vscene": b"old"}.items(),
               inputs={"out.vscene": None}),
        Scenario(
            "link",
            ["Content/Levels/yard.vscene"],
            {"Content/Levels/yard.vscene": Link("../../Shared/yard.vscene"), "Shared/yard.vscene": LAMP_V1,
             "Content/Materials/stone.vmat": b"stone"},
            {"Shared/yard.vscene": "Content/Levels/yard.vscene"},
        ),
        single("backup-taken", ["Content/well.vscene"],
               {"Content/well.vscene.legacy-v3": b"older",
                "Content/well.vscene.legacy-v3-2": Link("gone")}.items()),
        single("broken-sidecar", ["Content/well.vscene"],
               {"Content/Textures/sky.png.vmeta": b"vmeta 1\nguid nothing\n",
                "Content/Textures/sky.png.vmeta.unreadable": b"an earlier one"}.items()),
        Scenario("large", ["Content"], {"Content/large.vscene": large_scene()},
                 {"Content/large.vscene": "Content/large.vscene"}),
        Scenario("many", ["Content"], {f"Content/{number}.vscene": LAMP_V1 for number in range(12)},
                 {f"Content/{number}.vscene": f"Content/{number}.vscene" for number in range(12)}),
        Scenario("check", ["--check", "Content"], project, exit_codes=(1, 1)),
        Scenario("verify", ["--verify", "Content"],
                 {"Content/a.vscene": marker, "Content/b.vprefab": marker, **brass}),
        Scenario("schema", ["--markdown"], {}, program="vornu-schema"),
        Scenario(
            "writers",
            [],
            {"Content/old.vscene": b"scene_version 6\n", "Content/new.vscene": marker, **brass,
             "Content/stone.png": b"stone", "Content/stone.png.vmeta": sidecar(3, "texture"),
             "Cooked/CookedAssetManifest.vmanifest": b"vornu_cooked_manifest 1\n",
             "Library/old.png": b"old", "Library/old.png.vmeta": sidecar(5),
             "Library/old.png.materials/a": b"a"},
            {"Content/old.vscene": None, "Cooked/CookedAssetManifest.vmanifest": None},
            program="fault_writers",
        ),
    ]
