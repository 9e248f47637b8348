"""Reads pipeline files as GitLab and GitHub do. Needs python3-yaml."""

import dataclasses

import yaml

# The keys that the recipes may contain. Another key is a mistake, or it is new and a person must check it.
_GITLAB_KEYS = {"image", "stages"}
_GITLAB_JOB = {"stage", "parallel", "when", "cache", "script", "after_script", "artifacts"}
_GITLAB_CACHE = {"key", "paths", "when"}
_GITLAB_ARTIFACTS = {"when", "paths", "reports"}
_GITHUB_KEYS = {"name", "on", "jobs"}
_GITHUB_JOB = {"runs-on", "container", "steps"}
_GITHUB_STEP = {"name", "if", "run", "uses", "with"}


@dataclasses.dataclass
class Job:
    name: str
    commands: list
    parallel: int = 1
    artifacts: list = dataclasses.field(default_factory=list)  # patterns of files that the job keeps
    reports: list = dataclasses.field(default_factory=list)  # patterns of the job's JUnit reports


class _Loader(yaml.SafeLoader):
    """Refuses a key that occurs twice, and reads "on" as text."""

    def construct_mapping(self, node, deep=False):
        keys = [key.value for key, _ in node.value]
        _require(len(keys) == len(set(keys)), f"a key occurs twice: {keys}")
        return super().construct_mapping(node, deep)


_Loader.yaml_implicit_resolvers = {
    first: [(tag, pattern) for tag, pattern in resolvers if tag != "tag:yaml.org,2002:bool" or first not in "oO"]
    for first, resolvers in yaml.SafeLoader.yaml_implicit_resolvers.items()}


def _require(condition, text):
    if not condition:
        raise ValueError(text)


def _mapping(value, allowed, place):
    _require(isinstance(value, dict), f"{place} is no mapping: {value}")
    _require(set(value) <= allowed, f"{place} has unknown keys: {set(value) - allowed}")
    return value


def _texts(value, place):
    _require(isinstance(value, list) and value and all(isinstance(text, str) for text in value),
             f"{place} is no list of texts: {value}")
    return value


def jobs_of(text):
    """The jobs of a pipeline file in their order. Raises ValueError or yaml.YAMLError if the file is invalid."""
    document = yaml.load(text, _Loader)
    _require(isinstance(document, dict), f"no mapping: {document}")
    return list(_github_jobs(document) if "jobs" in document else _gitlab_jobs(document))


def _gitlab_jobs(document):
    _require(isinstance(document.get("image", ""), str), "the image is no text")
    stages = _texts(document.get("stages", ["test"]), "stages")
    jobs = {name: job for name, job in document.items() if name not in _GITLAB_KEYS}
    _require(jobs, "there is no job")
    for name, job in jobs.items():
        _mapping(job, _GITLAB_JOB, name)
        _require(job.get("stage", "test") in stages, f"{name} has an unknown stage")
        _require(job.get("when", "always") in ("always", "on_success", "on_failure"), f"when of {name}")
        artifacts = _mapping(job.get("artifacts", {}), _GITLAB_ARTIFACTS, f"artifacts of {name}")
        _require(artifacts.get("when", "always") in ("always", "on_success", "on_failure"), f"artifacts of {name}")
        reports = _mapping(artifacts.get("reports", {}), {"junit"}, f"reports of {name}")
        junit = reports.get("junit", [])
        if "cache" in job:
            _texts(_mapping(job["cache"], _GITLAB_CACHE, f"cache of {name}").get("paths"), f"cache of {name}")
        commands = _texts(job.get("script"), f"script of {name}")
        if "after_script" in job:
            commands = commands + _texts(job["after_script"], f"after_script of {name}")
        yield Job(name, commands, int(job.get("parallel", 1)),
                  _texts(artifacts["paths"], f"paths of {name}") if "paths" in artifacts else [],
                  [junit] if isinstance(junit, str) else _texts(junit, f"junit of {name}") if reports else [])


def _github_jobs(document):
    _mapping(document, _GITHUB_KEYS, "the workflow")
    _require("on" in document, "nothing starts the workflow")
    _require(isinstance(document["jobs"], dict) and document["jobs"], "there is no job")
    for name, job in document["jobs"].items():
        _mapping(job, _GITHUB_JOB, name)
        _require(isinstance(job.get("runs-on"), str), f"{name} has no machine")
        _require(isinstance(job.get("steps"), list) and job["steps"], f"{name} has no steps")
        found = Job(name, [])
        for step in job["steps"]:
            _add_step(found, _mapping(step, _GITHUB_STEP, f"a step of {name}"))
        yield found


def _add_step(job, step):
    _require(("run" in step) != ("uses" in step), f"run or uses: {step}")
    _require("uses" in step or "with" not in step, f"with needs uses: {step}")
    _require(isinstance(step.get("run", step.get("uses")), str), f"no text: {step}")
    if "run" in step:
        job.commands.append(step["run"])
        return
    _require("@" in step["uses"], f"no version: {step}")
    if step["uses"].startswith("actions/upload-artifact@"):
        job.artifacts += _mapping(step.get("with"), {"name", "path"}, str(step))["path"].split()
