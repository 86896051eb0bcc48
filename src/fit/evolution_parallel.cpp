// SPDX-License-Identifier: GPL-2.0-or-later
// The population on all processors, and the faster ranking.
#include <pthread.h>

#include <algorithm>
#include <exception>
#include <thread>
#include <vector>

#include "fit/evolution.h"

namespace tolvik {
namespace {

// Guards the counter of the next individual; one for the process.
pthread_spinlock_t counter_lock;

struct Work {
  std::int32_t count;
  std::int32_t* next;
  CEvolution* evolution;
  std::exception_ptr failure;
};

std::int32_t TakeNext(const Work& work) {
  pthread_spin_lock(&counter_lock);
  const std::int32_t taken = (*work.next)++;
  pthread_spin_unlock(&counter_lock);
  return taken;
}

// Every individual has a state of its own, so the errors need no lock.
void* EvaluateSome(void* argument) {
  Work& work = *static_cast<Work*>(argument);
  CEvolution& evolution = *work.evolution;
  try {
    for (std::int32_t i = TakeNext(work); i < work.count; i = TakeNext(work)) {
      evolution.errors[i] = CalcIndividualError(evolution.population[i]);
    }
  } catch (...) {
    work.failure = std::current_exception();
  }
  return nullptr;
}

// Starts a worker 2 below the default priority; a system that refuses the priority keeps the default one.
bool StartWorker(pthread_t& thread, Work& work) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  sched_param parameters{};
  pthread_attr_getschedparam(&attributes, &parameters);
  parameters.sched_priority -= 2;
  pthread_attr_setschedparam(&attributes, &parameters);
  const bool started = pthread_create(&thread, &attributes, EvaluateSome, &work) == 0;
  pthread_attr_destroy(&attributes);
  return started;
}

void SortPart(CArray<std::int32_t>& ranking, const CArray<double>& errors, std::int32_t first,
              std::int32_t last) {
  if (first >= last) return;
  const double pivot = errors[ranking[first + (last - first) / 2]];
  std::int32_t i = first;
  std::int32_t j = last;
  while (i <= j) {
    while (i <= last && errors[ranking[i]] < pivot) ++i;
    while (j >= first && pivot < errors[ranking[j]]) --j;
    if (i <= j) std::swap(ranking[i++], ranking[j--]);
  }
  SortPart(ranking, errors, first, j);
  SortPart(ranking, errors, i, last);
}

}  // namespace

void CEvolution::EvaluatePopulationParallel() {
  errors.Assign(population.size, 0.0);
  const std::size_t workers = std::max(1u, std::thread::hardware_concurrency());
  std::int32_t next = 0;
  std::vector<Work> work(workers, Work{population.size, &next, this, nullptr});
  std::vector<pthread_t> threads(workers);
  std::vector<bool> started(workers);
  pthread_spin_init(&counter_lock, PTHREAD_PROCESS_SHARED);
  for (std::size_t t = 0; t < workers; ++t) started[t] = StartWorker(threads[t], work[t]);
  // Where no thread could be had the caller does the work.
  if (std::find(started.begin(), started.end(), true) == started.end()) EvaluateSome(&work[0]);
  for (std::size_t t = 0; t < workers; ++t) {
    if (started[t]) pthread_join(threads[t], nullptr);
  }
  for (const Work& done : work) {
    if (done.failure != nullptr) std::rethrow_exception(done.failure);
  }
}

void CEvolution::SortRankingQuick() {
  SortPart(ranking, errors, 0, ranking.size - 1);
}

}  // namespace tolvik
