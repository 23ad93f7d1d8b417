module hexmire/benchmarks/peers/go-secs

go 1.26.0

require github.com/arloliu/go-secs/v2 v2.8.0

require (
	github.com/phsym/console-slog v0.3.1 // indirect
	github.com/puzpuzpuz/xsync/v3 v3.5.1 // indirect
)
