# SPDX-License-Identifier: GPL-2.0-or-later
"""Many independent tasks, serially or by any executor of `concurrent.futures`, with the same results.

A job is a picklable object that calculates one task by its index. It goes to the workers as bytes, and a worker keeps
it by its digest. Tasks that are finished when a worker dies or raises are kept in this process, so that a second call
does only the rest.
"""
from __future__ import annotations

import contextlib
import hashlib
import math
import os
import pickle
import sys
import time
import uuid
from collections import OrderedDict
from concurrent.futures import Executor, Future, as_completed
from typing import Any, Callable, Iterator, Optional, Protocol, Sequence, Union

from . import _core
from .errors import WorkerError

__all__ = ["Job", "Progress", "reporter", "run"]

Progress = Union[bool, Callable[[int, int], object]]

#: Work that is predicted to take less is done serially, s.
SERIAL_BELOW = 2.0
#: A chunk for a worker takes about as long, s.
CHUNK_SECONDS = 0.5

_KEPT = 4  # jobs that a worker keeps, and unfinished ones that the caller keeps
_process = (uuid.uuid4().hex, os.getpid())
_jobs: OrderedDict[str, Any] = OrderedDict()
_unfinished: OrderedDict[str, dict[int, Any]] = OrderedDict()


class Job(Protocol):
    """Tasks that do not depend on each other."""

    def __call__(self, task: int) -> Any:
        """Result of a task; it depends on the job and the task alone."""

    def name_of(self, task: int) -> str:
        """What a message calls the task."""


def run(job: Job, count: int, *, executor: Optional[Executor] = None, progress: Progress = False) -> list[Any]:
    """Results of the tasks 0 to count - 1 of a job.

    The first task runs here and is timed; what is predicted to take less than 2 s runs here altogether.

    Parameters
    ----------
    job : Job
        The job.
    count : int
        Number of tasks.
    executor : concurrent.futures.Executor, optional
        Threads, processes, `mpi4py.futures.MPIPoolExecutor`, or ``client.get_executor()`` of Dask. Processes should be
        spawned, not forked.
    progress : bool or callable, optional
        True for a bar on the standard error; a function is called with the tasks done and their number.

    Returns
    -------
    list
        One result per task, the same with and without an executor.

    Raises
    ------
    WorkerError
        If a task fails or a worker dies. Call again to do the rest.
    """
    blob = pickle.dumps(job)
    digest = hashlib.sha256(blob).hexdigest()
    done = _unfinished.setdefault(digest, {})
    _unfinished.move_to_end(digest)
    while len(_unfinished) > _KEPT:
        _unfinished.popitem(last=False)
    with reporter(progress, count) as report:
        report(len(done))
        per_task = _run_first(job, count, done, report)
        rest = [task for task in range(count) if task not in done]
        if executor is None or per_task * len(rest) < SERIAL_BELOW:
            for task in rest:
                done[task] = _one(job, task)
                report(len(done))
        else:
            _run_chunks(executor, (digest, blob), _chunks(rest, per_task, executor), job, done, report)
    del _unfinished[digest]
    return [done[task] for task in range(count)]


def _one(job: Job, task: int) -> Any:
    try:
        return job(task)
    except Exception as error:
        raise _failure(job, task, error) from error


def _failure(job: Job, task: int, error: BaseException) -> WorkerError:
    reason = f"{type(error).__name__}: {error}"
    return WorkerError(f"{job.name_of(task)}: {reason}; finished tasks are kept, call again to do the rest", task)


def _run_first(job: Job, count: int, done: dict[int, Any], report: Callable[[int], None]) -> float:
    for task in range(count):
        if task not in done:
            began = time.perf_counter()
            done[task] = _one(job, task)
            report(len(done))
            return time.perf_counter() - began
    return 0.0


def _chunks(rest: Sequence[int], per_task: float, executor: Executor) -> list[list[int]]:
    workers = getattr(executor, "_max_workers", None) or getattr(executor, "num_workers", None) or os.cpu_count() or 1
    fair = math.ceil(len(rest) / (4 * workers))
    size = max(1, min(fair, round(CHUNK_SECONDS / max(per_task, 1e-9))))
    return [list(rest[i:i + size]) for i in range(0, len(rest), size)]


def _run_chunks(executor: Executor, sent: tuple[str, bytes], chunks: list[list[int]], job: Job, done: dict[int, Any],
                report: Callable[[int], None]) -> None:
    futures: dict[Future[Any], list[int]] = {}
    failure: Optional[WorkerError] = None
    cause: Optional[BaseException] = None
    try:
        for chunk in chunks:
            futures[executor.submit(_work, _process, sent[0], sent[1], chunk)] = chunk
        for future in as_completed(futures):
            chunk = futures[future]
            error: Optional[BaseException] = None
            try:
                results, error = future.result()
            except Exception as died:
                results, error = [], died
            done.update(zip(chunk, results))
            report(len(done))
            if error is not None and failure is None:
                failure, cause = _failure(job, chunk[len(results)], error), error
    finally:
        for future in futures:
            future.cancel()
    if failure is not None:
        raise failure from cause


def _work(caller: tuple[str, int], digest: str, blob: bytes, chunk: list[int]) -> tuple[list[Any], Optional[Exception]]:
    """Body of a worker: results of a chunk, as far as it came, and what ended it."""
    if caller != (_process[0], os.getpid()):
        _core._set_threads(1)  # the workers share the processors
    job = _jobs.get(digest)
    if job is None:
        job = _jobs[digest] = pickle.loads(blob)
        while len(_jobs) > _KEPT:
            _jobs.popitem(last=False)
    results: list[Any] = []
    for task in chunk:
        try:
            results.append(job(task))
        except Exception as error:
            return results, _portable(error)
    return results, None


def _portable(error: Exception) -> Exception:
    """The exception, or one that says the same where it does not survive pickling."""
    try:
        pickle.loads(pickle.dumps(error))
    except Exception:
        return RuntimeError(f"{type(error).__name__}: {error}")
    return error


@contextlib.contextmanager
def reporter(progress: Progress, count: int) -> Iterator[Callable[[int], None]]:
    """Context of a report of progress.

    Parameters
    ----------
    progress : bool or callable
        As for `run`.
    count : int
        Number of tasks.

    Yields
    ------
    callable
        To be called with the number of tasks done.
    """
    if not isinstance(progress, bool):
        notice = progress
        yield lambda done: (notice(done, count), None)[1]
    elif progress:
        from tqdm import tqdm
        with tqdm(total=count, file=sys.stderr) as bar:
            yield lambda done: (bar.update(done - bar.n), None)[1]
    else:
        yield lambda done: None
